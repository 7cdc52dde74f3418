// Drives the built tool in a session of sway as a person does, and compares what it wrote with what was on the outputs,
// pixel for pixel. The session has outputs of the scales 1, 1.5 and 2; tests of OneScale want two of 1. Those of KWin
// run in a session of that.
#include "adapters/wayland/frozen/KWinScreenShots.h"
#include "support/CommandOutput.h"
#include "support/Eventually.h"
#include "support/WaylandHand.h"
#include "support/WaylandPattern.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using tavrine::testing::outputOf;
using tavrine::testing::WaylandHand;
using tavrine::testing::WaylandPattern;

class ScreenCaptureOnWayland : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(hand.isThere());
        ASSERT_TRUE(pattern.isThere());
        outputs = pattern.outputs();
        ASSERT_GE(outputs.size(), 2U);
        park();
        ASSERT_TRUE(eventually([&] { return isShown(0); }));
    }

    /// This compositor draws the pointer into every picture, having no other way to show it on these outputs.
    void park() { hand.move(outputs.back().logical.bottomRight() - QPoint(9, 9)); }

    [[nodiscard]] int last() const { return static_cast<int>(outputs.size()) - 1; }

    [[nodiscard]] QString file() const { return folder.filePath(QStringLiteral("capture.png")); }

    /// What is to be seen on an output, by another program.
    [[nodiscard]] QImage seen(int output) const {
        const QString name = QString::fromStdString(outputs.at(static_cast<size_t>(output)).name);
        return QImage::fromData(outputOf(QStringLiteral("grim"), {QStringLiteral("-t"), QStringLiteral("ppm"),
                                                                  QStringLiteral("-o"), name, QStringLiteral("-")}))
            .convertToFormat(QImage::Format_RGB32);
    }
    [[nodiscard]] bool isShown(int output) const {
        const QImage image = seen(output);
        const QRect part({}, image.size() / 2); // where the pointer is not
        return !image.isNull() && image.copy(part) == WaylandPattern::expected(output, part);
    }
    /// In a corner where nothing else of the tool stands.
    [[nodiscard]] bool isDimmed(int output) const {
        const QImage image = seen(output);
        const QPoint corner = image.rect().bottomLeft();
        return !image.isNull() &&
               qGray(image.pixel(corner)) < qGray(WaylandPattern::colourAt(output, corner.x(), corner.y())) * 3 / 4;
    }

    std::unique_ptr<QProcess> start(const QStringList &arguments) {
        auto tool = std::make_unique<QProcess>();
        tool->start(QStringLiteral(SCREENCAPTURE), arguments);
        EXPECT_TRUE(tool->waitForStarted());
        return tool;
    }
    std::unique_ptr<QProcess> capture() {
        park();
        auto tool = start({QStringLiteral("-i"), QStringLiteral("-x"), file()});
        EXPECT_TRUE(eventually([&] { return isDimmed(0) && isDimmed(last()); }))
            << "no overlay; the tool " << (tool->state() == QProcess::Running ? "runs" : "has ended") << ' '
            << tool->exitCode() << ' ' << tool->readAllStandardError().toStdString();
        return tool;
    }
    /// Starts the picker and waits until its magnifier is seen.
    std::unique_ptr<QProcess> pick(int output) {
        park();
        EXPECT_TRUE(eventually([&] { return isShown(0); }));
        const QImage before = seen(output);
        auto tool = start({QStringLiteral("-p")});
        hand.move(pointOn(output, {20, 20}));
        const QPoint within = QPoint(90, 70) * outputs[static_cast<size_t>(output)].scale();
        EXPECT_TRUE(eventually([&] { return seen(output).pixel(within) != before.pixel(within); })) << "no magnifier";
        return tool;
    }
    [[nodiscard]] static int statusOf(QProcess &tool) {
        EXPECT_TRUE(eventually([&] { return tool.state() == QProcess::NotRunning; }));
        EXPECT_EQ(tool.exitStatus(), QProcess::NormalExit);
        return tool.exitCode();
    }

    /// The point of the layout at a point of an output.
    [[nodiscard]] QPoint pointOn(int output, QPoint point) const {
        return outputs.at(static_cast<size_t>(output)).logical.topLeft() + point;
    }
    void expectPicture(int output, const QRect &area) const {
        const QImage taken = QImage(file()).convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(taken.size(), area.size());
        EXPECT_TRUE(taken == WaylandPattern::expected(output, area))
            << "the pixels differ, from the first: " << std::hex << taken.pixel(0, 0) << " for "
            << WaylandPattern::colourAt(output, area.x(), area.y());
    }
    [[nodiscard]] QStringList filesLeft() const {
        return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QTemporaryDir folder;
    WaylandHand hand;
    WaylandPattern pattern;
    std::vector<WaylandOutput> outputs;
};

TEST_F(ScreenCaptureOnWayland, aDraggedRegionIsWhatWasBeneathPixelForPixelAtEveryScale) {
    const double scales[] = {1, 1.5, 2};
    for (int output = 0; output < 3; ++output) {
        const double scale = scales[output];
        const auto tool = capture();
        hand.drag(pointOn(output, {100, 90}), pointOn(output, {318, 231}));
        EXPECT_EQ(statusOf(*tool), 0) << scale << tool->readAllStandardError().toStdString();
        const auto pixel = [&](int x, int y) { return QPoint(int(x * scale), int(y * scale)); };
        expectPicture(output, {pixel(100, 90), pixel(318, 231)});
        EXPECT_NEAR(QImage(file()).dotsPerMeterX(), scale * 96 / 0.0254, 1) << scale;
        QFile::remove(file());
        park();
        EXPECT_TRUE(eventually([&] { return isShown(0); })) << "the overlay stays";
    }
}

using OneScaleOnWayland = ScreenCaptureOnWayland;

TEST_F(OneScaleOnWayland, aDragOverTwoOutputsIsOnePicture) {
    const auto tool = capture();
    hand.drag({540, 50}, {739, 149});
    EXPECT_EQ(statusOf(*tool), 0);
    const QImage taken = QImage(file()).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(taken.size(), QSize(200, 100));
    EXPECT_TRUE(taken.copy(0, 0, 100, 100) == WaylandPattern::expected(0, {540, 50, 100, 100}));
    EXPECT_TRUE(taken.copy(100, 0, 100, 100) == WaylandPattern::expected(1, {0, 50, 100, 100}));
}

TEST_F(OneScaleOnWayland, aTurnedOutputIsTakenAsAnotherProgramTakesIt) {
    for (const char *const turned : {"90", "270", "flipped-90", "180", "normal"}) {
        outputOf(QStringLiteral("swaymsg"),
                 {QStringLiteral("output HEADLESS-1 transform ") + QString::fromLatin1(turned)});
        ASSERT_TRUE(eventually([&] {
            outputs = WaylandPattern().outputs(); // as it is now
            const QSize size = outputs[0].pixels();
            const bool isUpright = QByteArray(turned).endsWith("90") || QByteArray(turned).endsWith("270");
            return (size.height() > size.width()) == isUpright && seen(0).size() == size;
        })) << turned;
        park();
        const QImage before = seen(0);
        const auto tool = start({QStringLiteral("-i"), QStringLiteral("-x"), file()});
        ASSERT_TRUE(eventually([&] { return seen(0).pixel(5, 450) != before.pixel(5, 450); })) << turned;
        hand.drag(pointOn(0, {100, 90}), pointOn(0, {300, 250}));
        EXPECT_EQ(statusOf(*tool), 0);
        EXPECT_TRUE(QImage(file()).convertToFormat(QImage::Format_RGB32) ==
                    before.copy(QRect(QPoint(100, 90), QPoint(300, 250))))
            << turned;
    }
}

TEST_F(OneScaleOnWayland, anOutputThatComesEndsTheCaptureWithoutAFile) {
    const auto tool = capture();
    hand.dragAndHold(pointOn(0, {100, 100}), pointOn(0, {200, 200}));
    outputOf(QStringLiteral("swaymsg"), {QStringLiteral("create_output")});
    EXPECT_NE(statusOf(*tool), 0);
    hand.release();
    EXPECT_TRUE(filesLeft().isEmpty());
}

TEST_F(ScreenCaptureOnWayland, aDragStaysOnItsOutputWhereScalesDiffer) {
    const auto tool = capture();
    hand.drag(pointOn(0, {560, 100}), pointOn(1, {50, 120}));
    EXPECT_EQ(statusOf(*tool), 0);
    expectPicture(0, {QPoint(560, 100), QPoint(639, 120)});
}

TEST_F(ScreenCaptureOnWayland, escapeAndARightClickLeaveNoFile) {
    const auto tool = capture();
    hand.move(pointOn(0, {100, 100}));
    hand.tap(KEY_ESC);
    EXPECT_NE(statusOf(*tool), 0);
    const auto other = capture();
    hand.click(pointOn(1, {100, 100}), BTN_RIGHT);
    EXPECT_NE(statusOf(*other), 0);
    EXPECT_TRUE(filesLeft().isEmpty());
}

TEST_F(ScreenCaptureOnWayland, keysMoveTheAimAndTheFreeCorner) {
    const auto tool = capture();
    hand.move(pointOn(0, {200, 200}));
    for (const int key : {KEY_RIGHT, KEY_RIGHT, KEY_DOWN})
        hand.tap(key);
    hand.press(); // a hand that does not move the mouse: the aim counts
    hand.down(KEY_LEFTCTRL);
    hand.down(KEY_LEFTSHIFT);
    hand.tap(KEY_RIGHT);
    hand.tap(KEY_DOWN);
    hand.up(KEY_LEFTSHIFT);
    hand.up(KEY_LEFTCTRL);
    hand.tap(KEY_ENTER);
    EXPECT_EQ(statusOf(*tool), 0);
    hand.release();
    expectPicture(0, {QPoint(202, 201), QPoint(212, 211)});
}

TEST_F(ScreenCaptureOnWayland, theKeysAloneTakeAnArea) {
    const auto tool = capture();
    hand.move(pointOn(0, {200, 200}));
    hand.tap(KEY_ENTER);
    for (int i = 0; i < 20; ++i)
        hand.tap(KEY_RIGHT);
    hand.down(KEY_LEFTSHIFT);
    for (int i = 0; i < 3; ++i)
        hand.tap(KEY_DOWN);
    hand.up(KEY_LEFTSHIFT);
    hand.tap(KEY_SPACE);
    EXPECT_EQ(statusOf(*tool), 0);
    expectPicture(0, {QPoint(200, 200), QPoint(220, 230)});
}

TEST_F(ScreenCaptureOnWayland, spaceTakesTheWindowUnderThePointer) {
    QProcess window;
    window.start(QStringLiteral("foot"),
                 {QStringLiteral("-a"), QStringLiteral("picked"), QStringLiteral("sleep"), QStringLiteral("60")});
    QRect place;
    const std::function<void(const QJsonObject &)> find = [&](const QJsonObject &node) {
        for (const char *const key : {"nodes", "floating_nodes"})
            for (const QJsonValue &child : node[QLatin1String(key)].toArray())
                find(child.toObject());
        const QJsonObject rect = node[QLatin1String("rect")].toObject();
        if (node[QLatin1String("app_id")] == QLatin1String("picked"))
            place = {rect[QLatin1String("x")].toInt(), rect[QLatin1String("y")].toInt(),
                     rect[QLatin1String("width")].toInt(), rect[QLatin1String("height")].toInt()};
    };
    ASSERT_TRUE(eventually([&] {
        find(QJsonDocument::fromJson(outputOf(QStringLiteral("swaymsg"),
                                              {QStringLiteral("-r"), QStringLiteral("-t"), QStringLiteral("get_tree")}))
                 .object());
        if (!place.isEmpty())
            outputOf(QStringLiteral("swaymsg"), {QStringLiteral("[app_id=picked] floating enable, resize set 300 200, "
                                                                "move absolute position 137 95")});
        return place == QRect(137, 95, 300, 200) && !isShown(0);
    })) << place.x()
        << ' ' << place.y() << ' ' << place.width() << ' ' << place.height();
    park(); // which takes the keyboard from it
    QImage before;
    ASSERT_TRUE(eventually([&] { // until it has painted itself
        const QImage now = seen(0).copy(place);
        return std::exchange(before, now) == now &&
               now.pixel(150, 100) != WaylandPattern::colourAt(0, 137 + 150, 95 + 100);
    }));
    const auto tool = capture();
    hand.move(pointOn(0, place.center()));
    hand.tap(KEY_SPACE);
    hand.click(pointOn(0, place.center()));
    EXPECT_EQ(statusOf(*tool), 0);
    const QImage taken = QImage(file()).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(taken.size(), place.size());
    EXPECT_TRUE(taken == before);
    window.kill();
    window.waitForFinished();
}

TEST_F(ScreenCaptureOnWayland, aSecondCaptureEndsTheFirstAndDoesNotSeeIt) {
    const auto first = capture();
    const auto second = start({QStringLiteral("-i"), QStringLiteral("-x"), file()});
    EXPECT_NE(statusOf(*first), 0);
    EXPECT_TRUE(eventually([&] { return isDimmed(0); }));
    hand.drag(pointOn(0, {10, 20}), pointOn(0, {109, 119}));
    EXPECT_EQ(statusOf(*second), 0);
    expectPicture(0, {10, 20, 100, 100});
}

TEST_F(ScreenCaptureOnWayland, aFirstOneThatHangsIsEndedForTheSecond) {
    const auto first = capture();
    ::kill(static_cast<pid_t>(first->processId()), SIGSTOP);
    const auto second = start({QStringLiteral("-i"), QStringLiteral("-x"), file()});
    EXPECT_TRUE(eventually([&] { return first->state() == QProcess::NotRunning; }));
    ASSERT_TRUE(eventually([&] { return isDimmed(0); }));
    hand.drag(pointOn(0, {10, 20}), pointOn(0, {109, 119}));
    EXPECT_EQ(statusOf(*second), 0);
    expectPicture(0, {10, 20, 100, 100});
}

TEST_F(ScreenCaptureOnWayland, aPickedColourIsWrittenToTheStandardOutput) {
    for (const int output : {0, 1, 2}) {
        const auto tool = pick(output);
        const double scale = outputs[static_cast<size_t>(output)].scale();
        hand.click(pointOn(output, {222, 111}));
        EXPECT_EQ(statusOf(*tool), 0);
        const QRgb colour = WaylandPattern::colourAt(output, int(222 * scale), int(111 * scale));
        EXPECT_EQ(tool->readAllStandardOutput(), QColor(colour).name().toUpper().toUtf8() + '\n');
    }
    const auto tool = pick(0);
    hand.tap(KEY_ESC);
    EXPECT_EQ(statusOf(*tool), 1);
    EXPECT_TRUE(tool->readAllStandardOutput().isEmpty());
}

/// The same under KWin, which shows its outputs by a service on the bus.
class ScreenCaptureOnKWin : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(hand.isThere());
        ASSERT_TRUE(pattern.isThere());
        const auto shots = KWinScreenShots::open();
        ASSERT_TRUE(shots);
        ASSERT_TRUE(eventually([&] {
            const auto shot = shots->take(pattern.outputs()[0].name);
            quint32 pixel = 0;
            if (shot)
                shot->putInto({&pixel, 1, 1}, {-100, -90}, {100, 90, 1, 1});
            return (pixel & 0xffffffU) == (WaylandPattern::colourAt(0, 100, 90) & 0xffffffU);
        })) << "the pattern is not seen";
    }
    /// Nobody shows from outside when the overlay is there: the person tries again until it has worked.
    void endBy(QProcess &tool, const std::function<void()> &act) {
        EXPECT_TRUE(eventually([&] {
            act();
            return tool.state() == QProcess::NotRunning;
        }));
    }

    QTemporaryDir folder;
    WaylandHand hand;
    WaylandPattern pattern;
};

TEST_F(ScreenCaptureOnKWin, aDraggedRegionIsWhatWasBeneathPixelForPixel) {
    const double scale = pattern.outputs()[0].scale();
    const QString file = folder.filePath(QStringLiteral("capture.png"));
    QProcess tool;
    tool.start(QStringLiteral(SCREENCAPTURE), {QStringLiteral("-i"), QStringLiteral("-x"), file});
    endBy(tool, [&] { hand.drag({100, 90}, {300, 230}); });
    EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
    const QRect area(QPoint(int(100 * scale), int(90 * scale)), QPoint(int(300 * scale), int(230 * scale)));
    EXPECT_TRUE(QImage(file).convertToFormat(QImage::Format_RGB32) == WaylandPattern::expected(0, area));
}

TEST_F(ScreenCaptureOnKWin, escapeLeavesNoFileAndAPixelHasItsColour) {
    const QString file = folder.filePath(QStringLiteral("capture.png"));
    QProcess tool;
    tool.start(QStringLiteral(SCREENCAPTURE), {QStringLiteral("-i"), QStringLiteral("-x"), file});
    endBy(tool, [&] { hand.tap(KEY_ESC); });
    EXPECT_EQ(tool.exitCode(), 1);
    EXPECT_FALSE(QFile::exists(file));
    const double scale = pattern.outputs()[0].scale();
    tool.start(QStringLiteral(SCREENCAPTURE), {QStringLiteral("-p")});
    endBy(tool, [&] { hand.click({222, 111}); });
    EXPECT_EQ(tool.exitCode(), 0);
    EXPECT_EQ(tool.readAllStandardOutput(),
              QColor(WaylandPattern::colourAt(0, int(222 * scale), int(111 * scale))).name().toUpper().toUtf8() + '\n');
}

} // namespace
} // namespace tavrine::test
