// Drives the built tool as a person does, and compares what it wrote with what was on the screen, pixel for pixel.
#include "support/Eventually.h"
#include "support/PatternWindow.h"
#include "support/SoundRecording.h"
#include "support/TestKeyboard.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>
#include <memory>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using tavrine::testing::PatternWindow;
using tavrine::testing::TestKeyboard;
namespace key = tavrine::testing::key;

class ScreenCapture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        person.movePointer(pattern.screen().center().x(), pattern.screen().center().y());
    }

    [[nodiscard]] QString file(const char *name = "capture.png") const {
        return folder.filePath(QString::fromLatin1(name));
    }

    std::unique_ptr<QProcess> start(const QStringList &arguments, const QStringList &environment = {}) {
        auto tool = std::make_unique<QProcess>();
        tool->setEnvironment(QProcess::systemEnvironment() + environment);
        tool->start(QStringLiteral(SCREENCAPTURE), arguments);
        EXPECT_TRUE(tool->waitForStarted());
        return tool;
    }

    /// Starts the tool and waits until a person sees it and its keys work.
    std::unique_ptr<QProcess> capture(const QStringList &environment = {}) {
        auto tool = start({QStringLiteral("-i"), QStringLiteral("-x"), file()}, environment);
        EXPECT_TRUE(eventually([&] { return isDimmed(); }))
            << "no overlay; the tool " << (tool->state() == QProcess::Running ? "runs" : "has ended") << ' '
            << tool->exitCode() << ' ' << tool->readAllStandardError().toStdString();
        EXPECT_TRUE(eventually([&] { return isKeyboardTaken(); }));
        return tool;
    }

    /// Seen from outside, in a corner where nothing else of the tool stands.
    [[nodiscard]] bool isDimmed() const {
        const QPoint corner = pattern.screen().bottomLeft();
        return brightness(pattern.shownAt(corner.x(), corner.y())) <
               brightness(PatternWindow::colourAt(corner.x(), corner.y())) * 3 / 4;
    }
    [[nodiscard]] static unsigned brightness(unsigned colour) {
        return (colour >> 16) + (colour >> 8 & 0xff) + (colour & 0xff);
    }
    [[nodiscard]] bool isKeyboardTaken() {
        TestKeyboard other;
        const bool isFree = other.grabKeyboard();
        if (isFree)
            other.ungrabKeyboard();
        return !isFree;
    }

    void drag(QPoint from, QPoint to) {
        person.movePointer(from.x(), from.y());
        person.press(1);
        person.movePointer(to.x(), to.y());
        person.release(1);
    }

    [[nodiscard]] static int statusOf(QProcess &tool) {
        EXPECT_TRUE(eventually([&] { return tool.state() == QProcess::NotRunning; }));
        EXPECT_EQ(tool.exitStatus(), QProcess::NormalExit);
        return tool.exitCode();
    }

    void expectPicture(const QRect &area) const {
        const QImage taken = QImage(file()).convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(taken.size(), area.size());
        EXPECT_TRUE(taken == PatternWindow::expected(area)) << "the pixels differ";
    }

    /// Nothing at all, hidden names included.
    [[nodiscard]] QStringList filesLeft() const {
        return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QTemporaryDir folder;
    PatternWindow pattern;
    TestKeyboard person;
};

TEST_F(ScreenCapture, aDraggedRegionIsWhatWasBeneathPixelForPixel) {
    const auto tool = capture();
    drag({100, 90}, {419, 330});
    EXPECT_EQ(statusOf(*tool), 0);
    expectPicture({QPoint(100, 90), QPoint(419, 330)});
    EXPECT_EQ(filesLeft(), QStringList(QStringLiteral("capture.png")));
    EXPECT_EQ(QFile::permissions(file()) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST_F(ScreenCapture, aDragUpwardsAndLeftwardsIsTheSame) {
    const auto tool = capture();
    drag({419, 330}, {100, 90});
    EXPECT_EQ(statusOf(*tool), 0);
    expectPicture({QPoint(100, 90), QPoint(419, 330)});
}

TEST_F(ScreenCapture, fromCornerToCornerIsTheWholeScreen) {
    const auto tool = capture();
    drag({0, 0}, pattern.screen().bottomRight());
    EXPECT_EQ(statusOf(*tool), 0);
    expectPicture(pattern.screen());
}

TEST_F(ScreenCapture, theSizeOfThingsOnTheDesktopChangesNoPixel) {
    for (const char *const scale : {"1", "1.25", "1.5", "2"}) {
        const auto tool = capture({QStringLiteral("QT_SCALE_FACTOR=") + QString::fromLatin1(scale)});
        drag({11, 13}, {230, 177});
        EXPECT_EQ(statusOf(*tool), 0) << scale;
        expectPicture({QPoint(11, 13), QPoint(230, 177)});
        EXPECT_NEAR(QImage(file()).dotsPerMeterX(), QByteArray(scale).toDouble() * 96 / 0.0254, 1) << scale;
        QFile::remove(file());
    }
}

TEST_F(ScreenCapture, escapeLeavesNoFile) {
    const auto tool = capture();
    person.tap(key::escape);
    EXPECT_NE(statusOf(*tool), 0);
    EXPECT_TRUE(filesLeft().isEmpty());
}

TEST_F(ScreenCapture, escapeInTheMiddleOfADragLeavesNoFile) {
    const auto tool = capture();
    person.movePointer(100, 100);
    person.press(1);
    person.movePointer(300, 300);
    person.tap(key::escape);
    EXPECT_NE(statusOf(*tool), 0);
    person.release(1);
    EXPECT_TRUE(filesLeft().isEmpty());
}

TEST_F(ScreenCapture, aRightClickLeavesNoFile) {
    const auto tool = capture();
    person.click(3, 200, 200);
    EXPECT_NE(statusOf(*tool), 0);
    EXPECT_TRUE(filesLeft().isEmpty());
}

TEST_F(ScreenCapture, aClickChoosesNothingAndADragMayFollow) {
    const auto tool = capture();
    person.click(1, 200, 200);
    drag({50, 60}, {70, 90});
    EXPECT_EQ(statusOf(*tool), 0);
    expectPicture({QPoint(50, 60), QPoint(70, 90)});
}

TEST_F(ScreenCapture, arrowKeysMoveTheSelectionAndShiftResizesIt) {
    const auto tool = capture();
    person.movePointer(100, 100);
    person.press(1);
    person.movePointer(199, 149);
    for (const int keycode : {key::right, key::right, key::right, key::down, key::left, key::up, key::up})
        person.tap(keycode);
    for (const int keycode : {key::right, key::down, key::down})
        person.chord({key::leftShift, keycode});
    person.release(1);
    EXPECT_EQ(statusOf(*tool), 0);
    expectPicture({QPoint(102, 99), QPoint(202, 150)});
}

TEST_F(ScreenCapture, theKeysAloneTakeAnArea) {
    person.movePointer(100, 100);
    const auto tool = capture();
    person.tap(key::right);
    person.tap(key::returnKey);
    for (int i = 0; i < 20; ++i)
        person.chord({key::leftShift, key::right});
    for (int i = 0; i < 30; ++i)
        person.tap(key::down);
    person.tap(key::returnKey);
    EXPECT_EQ(statusOf(*tool), 0);
    expectPicture({QPoint(101, 100), QPoint(301, 130)});
}

TEST_F(ScreenCapture, spacePicksTheWindowUnderThePointer) {
    const QRect below(300, 200, 200, 150);
    const QRect above(400, 250, 200, 150);
    pattern.addWindow(below, 0x336699);
    pattern.addWindow(above, 0xcc8844);
    const auto tool = capture();
    person.tap(key::space);
    person.movePointer(450, 300); // both are here
    EXPECT_TRUE(eventually([&] { return pattern.shownAt(590, 390) != 0xcc8844U * 132 / 256; }));
    person.click(1, 450, 300);
    EXPECT_EQ(statusOf(*tool), 0);
    const QImage taken(file());
    EXPECT_EQ(taken.size(), above.size());
    EXPECT_EQ(taken.pixel(0, 0), 0xffcc8844U) << "neither dimmed nor tinted";
    EXPECT_EQ(taken.pixel(199, 149), 0xffcc8844U);
}

TEST_F(ScreenCapture, whatIsOpenWhenItStartsIsInThePictureThoughItHoldsPointerAndKeyboard) {
    TestKeyboard menu;
    const unsigned int window = pattern.addWindow({200, 200, 100, 100}, 0x12ab34);
    ASSERT_TRUE(menu.grabPointer());
    ASSERT_TRUE(menu.grabKeyboard());
    const auto tool = start({QStringLiteral("-i"), QStringLiteral("-x"), file()});
    ASSERT_TRUE(eventually([&] { return isDimmed(); })) << "the overlay does not wait for the grabs";
    letPass(1s);
    EXPECT_EQ(tool->state(), QProcess::Running);
    pattern.removeWindow(window); // as a menu goes
    menu.ungrabPointer();
    menu.ungrabKeyboard();
    ASSERT_TRUE(eventually([&] { return isKeyboardTaken(); }));
    drag({200, 200}, {299, 299});
    EXPECT_EQ(statusOf(*tool), 0);
    QImage expected(100, 100, QImage::Format_RGB32);
    expected.fill(0x12ab34);
    EXPECT_TRUE(QImage(file()).convertToFormat(QImage::Format_RGB32) == expected);
}

TEST_F(ScreenCapture, aTermSignalAtAnyMomentOfItsStartLeavesNoFile) {
    for (int moment = 0; moment < 40; ++moment) {
        const auto tool = start({QStringLiteral("-i"), QStringLiteral("-x"), file()});
        QThread::usleep(static_cast<unsigned long>(moment) * 1000);
        tool->terminate();
        ASSERT_TRUE(eventually([&] { return tool->state() == QProcess::NotRunning; })) << moment << " ms";
        EXPECT_TRUE(tool->exitStatus() == QProcess::CrashExit || tool->exitCode() != 0);
        EXPECT_TRUE(filesLeft().isEmpty()) << moment << " ms";
    }
}

TEST_F(ScreenCapture, aTermSignalInTheMiddleOfADragGivesTheScreenBack) {
    const auto tool = capture();
    person.movePointer(100, 100);
    person.press(1);
    person.movePointer(300, 300);
    tool->terminate();
    EXPECT_EQ(statusOf(*tool), 1);
    person.release(1);
    EXPECT_TRUE(filesLeft().isEmpty());
    EXPECT_TRUE(eventually([&] { return !isDimmed() && !isKeyboardTaken(); }));
}

TEST_F(ScreenCapture, aTermOrKillSignalWhileItWritesLeavesAWholeFileOrNone) {
    int written = 0;
    for (int moment = 0; moment < 24; ++moment) {
        // Away from the edge of the last drag: the cross there would go through the corner that is looked at.
        person.movePointer(pattern.screen().center().x(), pattern.screen().center().y());
        const auto tool = capture();
        drag({0, 0}, pattern.screen().bottomRight());
        QThread::usleep(static_cast<unsigned long>(moment) * 6000);
        ::kill(static_cast<pid_t>(tool->processId()), moment % 2 ? SIGKILL : SIGTERM);
        ASSERT_TRUE(eventually([&] { return tool->state() == QProcess::NotRunning; }));
        if (tool->exitStatus() == QProcess::NormalExit && tool->exitCode() == 0) {
            EXPECT_TRUE(QFile::exists(file()));
        }
        if (QFile::exists(file())) {
            ++written;
            EXPECT_EQ(filesLeft().size(), 1) << moment;
            expectPicture(pattern.screen());
            QFile::remove(file());
        }
        EXPECT_TRUE(filesLeft().isEmpty()) << moment;
        ASSERT_TRUE(eventually([&] { return !isDimmed(); }));
    }
    RecordProperty("written", written);
}

TEST_F(ScreenCapture, aSecondCaptureEndsTheFirstAndDoesNotSeeIt) {
    auto first = start({QStringLiteral("-i"), QStringLiteral("-x"), file("first.png")});
    ASSERT_TRUE(eventually([&] { return isDimmed(); }));
    const auto second = start({QStringLiteral("-i"), QStringLiteral("-x"), file()});
    EXPECT_EQ(statusOf(*first), 1);
    ASSERT_TRUE(eventually([&] { return isDimmed() && isKeyboardTaken(); }));
    drag({30, 40}, {300, 200});
    EXPECT_EQ(statusOf(*second), 0);
    expectPicture({QPoint(30, 40), QPoint(300, 200)});
    EXPECT_FALSE(QFile::exists(file("first.png")));
}

TEST_F(ScreenCapture, aCaptureRightAfterATerminatedOneDoesNotSeeIt) {
    auto first = start({QStringLiteral("-i"), QStringLiteral("-x"), file("first.png")});
    ASSERT_TRUE(eventually([&] { return isDimmed(); }));
    first->terminate();
    const auto second = start({QStringLiteral("-i"), QStringLiteral("-x"), file()});
    EXPECT_EQ(statusOf(*first), 1);
    ASSERT_TRUE(eventually([&] { return isDimmed() && isKeyboardTaken(); }));
    drag({30, 40}, {300, 200});
    EXPECT_EQ(statusOf(*second), 0);
    expectPicture({QPoint(30, 40), QPoint(300, 200)});
}

TEST_F(ScreenCapture, aSelectionMayReachOverTwoMonitors) {
    const QRect screen = pattern.screen();
    const int half = screen.width() / 2;
    const auto monitor = [&](const char *name, int x, int width) {
        QProcess::execute(QStringLiteral("xrandr"),
                          {QStringLiteral("--setmonitor"), QString::fromLatin1(name),
                           QStringLiteral("%1/300x%2/200+%3+0").arg(width).arg(screen.height()).arg(x),
                           QStringLiteral("none")});
    };
    monitor("Left", 0, half);
    monitor("Right", half, screen.width() - half);
    const QStringList scales{QStringLiteral("QT_SCREEN_SCALE_FACTORS=Left=1;Right=2")};
    auto tool = capture(scales);
    drag({half - 70, 50}, {half + 90, 250});
    EXPECT_EQ(statusOf(*tool), 0);
    expectPicture({QPoint(half - 70, 50), QPoint(half + 90, 250)});

    // The pattern covers both, so that Space takes all of it.
    QFile::remove(file());
    tool = capture(scales);
    person.tap(key::space);
    person.click(1, half + 10, 300);
    EXPECT_EQ(statusOf(*tool), 0);
    expectPicture(screen);
    for (const char *const name : {"Left", "Right"})
        QProcess::execute(QStringLiteral("xrandr"), {QStringLiteral("--delmonitor"), QString::fromLatin1(name)});
}

TEST_F(ScreenCapture, aFileThatStoodThereIsReplacedOnlyByAPicture) {
    QFile old(file());
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("old");
    old.close();
    auto tool = capture();
    person.tap(key::escape);
    EXPECT_NE(statusOf(*tool), 0);
    EXPECT_EQ(QFile(file()).size(), 3);
    tool = capture();
    drag({10, 10}, {20, 20});
    EXPECT_EQ(statusOf(*tool), 0);
    expectPicture({QPoint(10, 10), QPoint(20, 20)});
    EXPECT_EQ(filesLeft().size(), 1);
}

TEST_F(ScreenCapture, withTheShutterSoundItEndsAsFastThoughNoSoundServerRuns) {
    const auto tool = start({QStringLiteral("-i"), file()});
    ASSERT_TRUE(eventually([&] { return isDimmed() && isKeyboardTaken(); }));
    QElapsedTimer timer;
    drag({10, 10}, {200, 200});
    timer.start();
    EXPECT_EQ(statusOf(*tool), 0);
    EXPECT_LT(timer.elapsed(), 4000) << "of 6000 for who waits for the sound";
    expectPicture({QPoint(10, 10), QPoint(200, 200)});
}

TEST_F(ScreenCapture, theShutterIsHeardUnlessTheCaptureIsToBeSilent) {
    const test::PrivateSound sound(test::SoundServerKind::pulseAudio);
    const test::SoundRecording recording(QStringLiteral("one"));
    ASSERT_TRUE(eventually([&] { return recording.samples() > test::PrivateSound::rate / 2; }));
    const auto silent = capture();
    drag({10, 10}, {200, 200});
    EXPECT_EQ(statusOf(*silent), 0);
    const qsizetype then = recording.samples();
    ASSERT_TRUE(eventually([&] { return recording.samples() > then + 2 * test::PrivateSound::rate; }));
    EXPECT_EQ(recording.loudSamples(), 0);
    const auto heard = start({QStringLiteral("-i"), file()});
    ASSERT_TRUE(eventually([&] { return isDimmed() && isKeyboardTaken(); }));
    drag({10, 10}, {200, 200});
    EXPECT_EQ(statusOf(*heard), 0);
    EXPECT_TRUE(eventually([&] { return recording.loudSamples() > test::PrivateSound::rate / 50; }));
}

TEST_F(ScreenCapture, wrongArgumentsPrintTheUsageAndLeaveNoFile) {
    const QList<QStringList> wrong{{},
                                   {QStringLiteral("-i")},
                                   {file()},
                                   {QStringLiteral("-x"), file()},
                                   {QStringLiteral("-i"), QStringLiteral("-c"), file()},
                                   {QStringLiteral("-i"), file(), file("two.png")}};
    for (const QStringList &arguments : wrong) {
        const auto tool = start(arguments);
        EXPECT_EQ(statusOf(*tool), 1);
        EXPECT_EQ(tool->readAllStandardError(),
                  "usage: screencapture -i [-x] [-f PICTURE] FILE\n       screencapture -p\n");
        EXPECT_TRUE(filesLeft().isEmpty());
    }
}

TEST_F(ScreenCapture, aFileThatCannotBeWrittenIsToldBeforeThePersonChooses) {
    for (const QString &path : {file("missing/capture.png"), folder.path(), QStringLiteral("/proc/capture.png")}) {
        const auto tool = start({QStringLiteral("-i"), QStringLiteral("-x"), path});
        EXPECT_EQ(statusOf(*tool), 1) << path.toStdString();
        EXPECT_FALSE(tool->readAllStandardError().isEmpty());
        EXPECT_TRUE(filesLeft().isEmpty());
    }
}

TEST_F(ScreenCapture, aFileThatIsADeviceAPipeOrAFolderIsRefusedAndStays) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(file("pipe")).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/null"), file("device")));
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("folder")));
    const QStringList before = filesLeft();
    for (const auto &[name, reason] :
         {std::pair("pipe", "not a plain file"), {"device", "not a plain file"}, {"folder", "Is a directory"}}) {
        const auto tool = start({QStringLiteral("-i"), QStringLiteral("-x"), file(name)});
        EXPECT_EQ(statusOf(*tool), 1) << name;
        EXPECT_EQ(tool->readAllStandardError(), "screencapture: " + file(name).toUtf8() + ": " + reason + "\n");
        EXPECT_EQ(filesLeft(), before);
    }
}

TEST_F(ScreenCapture, withoutADisplayItEndsWithAnError) {
    const auto tool = start({QStringLiteral("-i"), file()}, {QStringLiteral("DISPLAY=:4711")});
    EXPECT_EQ(statusOf(*tool), 1);
    EXPECT_TRUE(filesLeft().isEmpty());
}

} // namespace
} // namespace tavrine::test
