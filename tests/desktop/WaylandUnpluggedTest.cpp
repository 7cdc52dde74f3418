// Outputs that go and come under the built program. The session's are windows of an outer compositor
// (with-outputs-to-unplug).

#include "desktop/ShelfDragging.h"
#include "support/MovieReading.h"

#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QUrl>

#include <gtest/gtest.h>

namespace tavrine::testing {
namespace {

using test::runProgram;
using test::streamsOf;

class WaylandUnplugged : public ::testing::Test {
protected:
    void SetUp() override {
        if (outputs().size() < 2)
            plug();
        ASSERT_EQ(outputs().size(), 2);
        second = outputs().last();
        (void)hand.layout();
        hand.move(onSecond); // panels come to the screen of the pointer
        ASSERT_TRUE(waitUntil([this] { return isPlain(first) && isPlain(second); }));
        ASSERT_TRUE(program.startOnboarded());
    }

    [[nodiscard]] static QStringList outputs() {
        const auto told = runProgram(QStringLiteral("swaymsg"),
                                     {QStringLiteral("-r"), QStringLiteral("-t"), QStringLiteral("get_outputs")});
        QStringList names;
        const auto all = QJsonDocument::fromJson(told.output).array();
        for (const auto &output : all)
            names.append(output.toObject()[QLatin1String("name")].toString());
        names.sort();
        return names;
    }
    [[nodiscard]] static QImage shown(const QString &output) {
        const auto told = runProgram(QStringLiteral("grim"), {QStringLiteral("-t"), QStringLiteral("ppm"),
                                                              QStringLiteral("-o"), output, QStringLiteral("-")});
        return QImage::fromData(told.output);
    }
    /// Nothing is on that output but the resting shelf and the pointer, which is in its middle or not there.
    [[nodiscard]] static bool isPlain(const QString &output) {
        const QImage seen = shown(output);
        const QRect pointer(seen.rect().center() - QPoint(50, 50), QSize(100, 100));
        for (int y = belowTheShelf; y < seen.height(); y += 4)
            for (int x = 0; x < seen.width(); x += 4)
                if (!pointer.contains(x, y) && seen.pixel(x, y) != seen.pixel(0, belowTheShelf))
                    return false;
        return !seen.isNull();
    }
    [[nodiscard]] static bool becomesPlain(const QString &output) {
        return waitUntil([&output] { return isPlain(output); });
    }
    [[nodiscard]] static bool becomesCovered(const QString &output) {
        return waitUntil([&output] { return !isPlain(output); });
    }
    /// The second one. The compositor moves the pointer, and the hand puts it into the middle of the first.
    void unplug() {
        (void)runProgram(QStringLiteral("swaymsg"), {QStringLiteral("-s"), qEnvironmentVariable("OUTER_SWAYSOCK"),
                                                     QStringLiteral("[title=\"wlroots - %1\"] kill").arg(second)});
        ASSERT_TRUE(waitUntil([] { return outputs().size() == 1; }));
        (void)hand.layout(); // it hears of the change
        hand.move(onFirst);
    }
    void plug() {
        (void)runProgram(QStringLiteral("swaymsg"), {QStringLiteral("create_output")});
        ASSERT_TRUE(waitUntil([] { return outputs().size() == 2; }));
        second = outputs().last();
    }
    void say(const char *word) const {
        const auto caller = program.startAgain({QLatin1String(word)});
        ASSERT_TRUE(caller->waitForFinished(10'000));
    }
    [[nodiscard]] bool says(const char *words) {
        return waitUntil([&] { return program.output().contains(QLatin1String(words)); }, std::chrono::seconds(30));
    }

    static constexpr int belowTheShelf = 32;
    /// It has its items where no toast comes.
    [[nodiscard]] static bool opensTheShelf(const QString &output) {
        return waitUntil([&output] {
            const QImage seen = shown(output);
            return !seen.isNull() && seen.pixel(seen.width() / 2 - 100, 80) != seen.pixel(0, belowTheShelf);
        });
    }
    /// The second output's, with a file; it rests afterwards.
    void putOnShelf() {
        const QString list = program.home() + QStringLiteral("/dragged.list");
        QFile file(list);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(QUrl::fromLocalFile(list).toEncoded() + "\r\n") > 0);
        file.close();
        ASSERT_TRUE(ShelfDragging(program, hand).putOnShelf(list, onSecond, {onSecond.x(), 0}))
            << qPrintable(program.output());
        hand.move(onSecond);
        ASSERT_TRUE(becomesPlain(second));
    }
    /// Of a part of the second output. A busy compositor that does not tell in time where the pointer is has the
    /// overlay opened on the other: a person closes it there and tries again.
    [[nodiscard]] bool startRecording() {
        for (int tries = 0; tries < 5; ++tries) {
            say("--record");
            (void)waitUntil([this] { return !isPlain(first) || !isPlain(second); });
            if (!isPlain(second)) {
                hand.drag(QPoint(1280 + 200, 140), QPoint(1280 + 520, 340));
                hand.tap(KEY_ENTER);
                if (waitUntil([this] { return program.output().contains(QLatin1String("from first SCStream frame")); }))
                    return true;
            }
            hand.tap(KEY_ESC);
            if (!becomesPlain(first) || !becomesPlain(second))
                return false;
        }
        return false;
    }

    const QString first = QStringLiteral("WL-1");
    const QPoint onFirst{640, 360};
    const QPoint onSecond{1280 + 640, 360};
    QString second;
    WaylandHand hand;
    Program program;
};

TEST_F(WaylandUnplugged, aPanelGoesToTheOutputThatIsLeftAndToOneThatComes) {
    say("--clipboard");
    ASSERT_TRUE(becomesCovered(second));
    EXPECT_TRUE(isPlain(first));
    unplug();
    EXPECT_TRUE(becomesCovered(first));
    hand.tap(KEY_ESC);
    EXPECT_TRUE(becomesPlain(first));
    say("--clipboard");
    EXPECT_TRUE(becomesCovered(first));
    hand.tap(KEY_ESC);
    EXPECT_TRUE(becomesPlain(first));
    plug();
    (void)hand.layout();
    hand.move(onSecond);
    say("--clipboard");
    EXPECT_TRUE(becomesCovered(second));
    EXPECT_TRUE(program.isRunning());
}

TEST_F(WaylandUnplugged, aClickBesideAPanelTakesItAwayAfterAnOutputHasGone) {
    say("--clipboard");
    ASSERT_TRUE(becomesCovered(second));
    unplug();
    ASSERT_TRUE(becomesCovered(first));
    EXPECT_TRUE(waitUntil([this] {
        hand.click({60, 650});
        hand.move(onFirst); // where the picture's pointer is left out
        return waitUntil([this] { return isPlain(first); }, std::chrono::seconds(1));
    }));
    EXPECT_TRUE(program.isRunning());
}

TEST_F(WaylandUnplugged, theOpenShelfIsClosedWithItsOutputAndOpensOnTheOneThatIsLeft) {
    ASSERT_NO_FATAL_FAILURE(putOnShelf());
    say("--shelf");
    ASSERT_TRUE(opensTheShelf(second));
    unplug();
    ASSERT_TRUE(says("[NotchShelf] Pinned display disconnected, re-pinned to "));
    EXPECT_TRUE(becomesPlain(first));
    say("--shelf");
    EXPECT_TRUE(opensTheShelf(first));
    EXPECT_TRUE(program.isRunning());
}

/// It stays for less than three seconds. A machine that needs longer to unplug one shows that it has ended.
TEST_F(WaylandUnplugged, aToastComesToTheOutputThatIsLeftAndEndsThere) {
    const QRect toast((1280 - 250) / 2, 720 - 120 - 60 - 10, 250, 60);
    const auto ground = [this] { return shown(first).pixel(0, belowTheShelf); };
    const auto isOn = [&](const QString &output) {
        const QImage seen = shown(output);
        return !seen.isNull() && seen.pixel(toast.center() + QPoint(0, 20)) != ground();
    };
    bool isSeenThere = false;
    for (int tries = 0; tries < 3 && !isSeenThere; ++tries) {
        if (outputs().size() < 2) {
            plug();
            (void)hand.layout();
            hand.move(onSecond);
        }
        say("--shelf"); // an empty one
        ASSERT_TRUE(waitUntil([&] { return isOn(second); }));
        EXPECT_FALSE(isOn(first));
        unplug();
        isSeenThere = waitUntil([&] { return isOn(first); }, std::chrono::seconds(3));
        EXPECT_TRUE(waitUntil([&] { return !isOn(first); }));
    }
    EXPECT_TRUE(isSeenThere);
    EXPECT_TRUE(program.isRunning());
}

TEST_F(WaylandUnplugged, theCardOfACaptureComesToTheOutputThatIsLeft) {
    say("--capture");
    ASSERT_TRUE(becomesCovered(second));
    hand.drag(QPoint(1280 + 200, 140), QPoint(1280 + 520, 340));
    ASSERT_TRUE(
        waitUntil([this] { return !program.rows("SELECT 1 FROM items WHERE image_file_name IS NOT NULL").isEmpty(); }));
    ASSERT_TRUE(becomesCovered(second));
    unplug();
    EXPECT_TRUE(becomesCovered(first));
    EXPECT_TRUE(program.isRunning());
}

/// The person ends it as ever: its bar comes to the other output.
TEST_F(WaylandUnplugged, whatWasRecordedOfAnOutputThatGoesIsAMovie) {
    ASSERT_TRUE(startRecording()) << qPrintable(program.output());
    unplug();
    EXPECT_TRUE(says("SCStream stopped unexpectedly")) << qPrintable(program.output());
    ASSERT_TRUE(becomesCovered(first));
    const QPoint ground(300, 600);
    const QRgb before = shown(first).pixel(ground);
    say("--record");
    ASSERT_TRUE(waitUntil([&] { return shown(first).pixel(ground) != before; })); // the overlay
    hand.tap(KEY_SPACE);                                                          // ends what is under way
    EXPECT_TRUE(says("finished successfully at ")) << qPrintable(program.output());
    const auto path = QRegularExpression(QStringLiteral("finished successfully at (.*), showing preview"))
                          .match(program.output())
                          .captured(1);
    EXPECT_EQ(test::complaintsAbout(path), QByteArray());
    const auto streams = streamsOf(path);
    ASSERT_EQ(streams.size(), 1);
    EXPECT_EQ(streams.front()[QLatin1String("width")].toInt(), 320);
    EXPECT_TRUE(program.isRunning());
}

} // namespace
} // namespace tavrine::testing
