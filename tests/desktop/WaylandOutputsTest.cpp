// What the built program takes of its outputs, and where its windows come there.
#include "desktop/WaylandProgram.h"
#include "support/QrModules.h"
#include "support/WaylandPattern.h"

#include <QColor>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tavrine::testing {
namespace {

/// On sway, with a second output of another scale at the right.
class WaylandOutputs : public WaylandProgram {
protected:
    /// Where neither the overlay's help nor a window is.
    const QPoint corner{5, 700};
};

TEST_F(WaylandOutputs, aCaptureIsOnTheClipboardPixelForPixelAndInTheHistory) {
    WaylandPattern pattern;
    ASSERT_TRUE(pattern.isThere());
    const QPoint parked = hand.layout().bottomRight() - QPoint(9, 9); // this compositor draws the pointer into pictures
    hand.move(parked);
    ASSERT_TRUE(waitUntil([this] { return seenAt(corner) == WaylandPattern::colourAt(0, corner.x(), corner.y()); }));
    ASSERT_TRUE(program.startOnboarded());
    const auto caller = program.startAgain({QStringLiteral("--capture")});
    ASSERT_TRUE(caller->waitForFinished(10'000));
    ASSERT_TRUE(waitUntil([this] { return seenAt(corner) != WaylandPattern::colourAt(0, corner.x(), corner.y()); }));
    const QRect area(100, 100, 200, 100);
    hand.drag(area.topLeft(), area.bottomRight());
    QImage taken;
    EXPECT_TRUE(waitUntil([&taken] {
        taken = QImage::fromData(
            outputOf(QStringLiteral("wl-paste"), {QStringLiteral("--type"), QStringLiteral("image/png")}));
        return !taken.isNull();
    }));
    ASSERT_EQ(taken.size(), area.size());
    EXPECT_TRUE(taken.convertToFormat(QImage::Format_RGB32) == WaylandPattern::expected(0, area));
    EXPECT_TRUE(waitUntil([this] {
        return !program.rows("SELECT image_file_name FROM items WHERE image_file_name IS NOT NULL").isEmpty();
    }));
}

TEST_F(WaylandOutputs, aScanTellsTheCodeUnderTheDragInAPanelThatCopiesIt) {
    WaylandPattern pattern;
    ASSERT_TRUE(pattern.isThere());
    const QrModules code = qrModules(QStringLiteral("what stands in the code"), {150, 100}, 6);
    ASSERT_FALSE(code.dark.empty());
    pattern.paint(0, code.ground, 0xffffffff);
    for (const QRect &square : code.dark)
        pattern.paint(0, square, 0xff000000);
    hand.move({900, 600}); // the panel comes to the screen under the pointer
    const QRgb shown = WaylandPattern::colourAt(0, middle.x(), middle.y());
    ASSERT_TRUE(waitUntil([&] { return seenAt(middle) == shown && seenAt(code.ground.topLeft()) == 0xffffffff; }));
    ASSERT_TRUE(program.startOnboarded());
    const auto scan = [&] {
        const auto caller = program.startAgain({QStringLiteral("--qr-scan")});
        return caller->waitForFinished(10'000) && waitUntil([&] { return seenAt(middle) != shown; });
    };
    ASSERT_TRUE(scan());
    hand.tap(KEY_ESC);
    EXPECT_TRUE(waitUntil([&] { return seenAt(middle) == shown; }));
    EXPECT_FALSE(waitUntil([&] { return seenAt(middle) != shown; }, std::chrono::seconds(2))) << "it was given up";
    ASSERT_TRUE(scan());
    hand.drag(code.ground.topLeft() - QPoint(4, 4), code.ground.bottomRight() + QPoint(4, 4));
    const QPoint row(560, 384); // the only one of the panel in the middle
    EXPECT_TRUE(waitUntil([&] { // it may be on its way
        hand.click(row);
        return waitUntil([] { return pasted() == "what stands in the code"; }, std::chrono::seconds(1));
    }));
    EXPECT_NE(seenAt(middle), shown);
    hand.tap(KEY_ESC);
    EXPECT_TRUE(waitUntil([&] { return seenAt(middle) == shown; }));
}

TEST_F(WaylandOutputs, theColourUnderAClickIsCopied) {
    WaylandPattern pattern;
    ASSERT_TRUE(pattern.isThere());
    const QPoint away(900, 400);
    const QPoint beside = away + QPoint(70, 70); // where the magnifier stands
    hand.move(away);
    const QRgb shown = WaylandPattern::colourAt(0, beside.x(), beside.y());
    ASSERT_TRUE(waitUntil([&] { return seenAt(beside) == shown; }));
    ASSERT_TRUE(program.startOnboarded());
    const auto owner = copyAs(QStringLiteral("copied before"));
    const auto ask = [&] {
        const auto caller = program.startAgain({QStringLiteral("--color")});
        return caller->waitForFinished(10'000) && waitUntil([&] { return seenAt(beside) != shown; });
    };
    ASSERT_TRUE(ask());
    hand.tap(KEY_ESC);
    EXPECT_TRUE(waitUntil([&] { return seenAt(beside) == shown; }));
    EXPECT_EQ(pasted(), "copied before");
    ASSERT_TRUE(ask());
    const QPoint place(333, 222);
    hand.click(place);
    const QByteArray wanted =
        QColor::fromRgb(WaylandPattern::colourAt(0, place.x(), place.y())).name().toUpper().toLatin1();
    EXPECT_TRUE(waitUntil([&] { return pasted() == wanted; })) << wanted.constData() << " " << pasted().constData();
}

/// What is frozen lies over everything, also over what hears of presses beside the panel.
TEST_F(WaylandOutputs, aCaptureIsTakenWhileAPanelIsOpen) {
    const WaylandPattern pattern;
    ASSERT_TRUE(pattern.isThere());
    const auto isPattern = [](QPoint place) {
        return seenAt(place) == WaylandPattern::colourAt(0, place.x(), place.y());
    };
    hand.move({1200, 700}); // the panel comes to this screen
    ASSERT_TRUE(waitUntil([&] { return isPattern(corner); }));
    ASSERT_TRUE(program.startOnboarded());
    ASSERT_TRUE(program.startAgain({QStringLiteral("--clipboard")})->waitForFinished(10'000));
    ASSERT_TRUE(waitUntil([&] { return !isPattern({640, 300}); }));
    EXPECT_TRUE(isPattern(corner)); // which stays as it is
    ASSERT_TRUE(program.startAgain({QStringLiteral("--capture")})->waitForFinished(10'000));
    ASSERT_TRUE(waitUntil([&] { return !isPattern(corner); }));
    hand.drag({60, 600}, {160, 680});
    EXPECT_TRUE(waitUntil([] {
        return !QImage::fromData(
                    outputOf(QStringLiteral("wl-paste"), {QStringLiteral("--type"), QStringLiteral("image/png")}))
                    .isNull();
    }));
}

/// Beside others it would get a tile in which it has no room.
TEST_F(WaylandOutputs, theSettingsFloatOverTheTiles) {
    ASSERT_TRUE(program.startOnboarded());
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    const auto caller = program.startAgain({QStringLiteral("--settings")});
    ASSERT_TRUE(caller->waitForFinished(10'000));
    EXPECT_TRUE(waitUntil([] {
        const auto floating = [](const QJsonObject &part, const auto &inner) -> QJsonArray {
            QJsonArray found = part[QStringLiteral("floating_nodes")].toArray();
            const auto parts = part[QStringLiteral("nodes")].toArray();
            for (const auto &each : parts)
                for (const auto &deeper : inner(each.toObject(), inner))
                    found.append(deeper);
            return found;
        };
        const auto tree = outputOf(QStringLiteral("swaymsg"),
                                   {QStringLiteral("-r"), QStringLiteral("-t"), QStringLiteral("get_tree")});
        const QJsonArray all = floating(QJsonDocument::fromJson(tree).object(), floating);
        return all.size() == 1 && all.at(0)[QStringLiteral("name")] == QStringLiteral("Tavrine") &&
               all.at(0)[QStringLiteral("window_rect")][QStringLiteral("width")].toInt() == 900;
    }));
}

} // namespace
} // namespace tavrine::testing
