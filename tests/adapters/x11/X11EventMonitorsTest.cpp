#include "adapters/x11/X11EventMonitors.h"

#include "adapters/fake/FakeHotKeys.h"
#include "adapters/linux/QtTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "shell/HotKeyCenter.h"
#include "support/OwnWindow.h"
#include "support/TestKeyboard.h"
#include "support/Wait.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>
#include <QRasterWindow>
#include <QTemporaryDir>
#include <QThread>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::waitUntil;
namespace key = testing::key;

bool run(const char *command) {
    return QProcess::execute(QStringLiteral("sh"), {QStringLiteral("-c"), QString::fromUtf8(command)}) == 0;
}

class X11EventMonitorsTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(run("setxkbmap -option; setxkbmap us")); }
    void TearDown() override {
        for (const int held : {key::leftAlt, key::rightAlt, key::leftShift, key::leftSuper})
            if (keyboard.isDown(held))
                keyboard.up(held);
        if (keyboard.locks() & 0x02)
            keyboard.tap(key::capsLock);
        (void)run("setxkbmap -option; setxkbmap us");
    }
    void watch(quint32 mask) {
        monitor = monitors.addGlobalMonitor(mask, [this](const InputEvent &event) {
            flags.push_back(event.modifierFlags);
            keys.push_back(event.keyCode);
            types.push_back(event.type);
        });
    }
    void settle() {
        // What was typed has arrived; a busy machine gives us few turns in which to read it.
        for (int turn = 0; turn < 10; ++turn)
            (void)waitUntil([] { return false; }, 6ms);
    }

    testing::TestKeyboard keyboard;
    X11EventMonitors monitors;
    std::vector<quint32> flags;
    std::vector<int> keys;
    std::vector<quint32> types;
    std::unique_ptr<EventMonitor> monitor;
};

TEST_F(X11EventMonitorsTest, eachModifierIsToldAsItGoesDownAndUp) {
    watch(eventMask::flagsChanged);
    for (const int modifier : {key::leftAlt, key::rightAlt, key::leftShift, key::leftControl, key::leftSuper})
        keyboard.tap(modifier);
    settle();
    EXPECT_THAT(flags, ElementsAre(0x80000, 0, 0x80000, 0, 0x20000, 0, 0x40000, 0, 0x100000, 0));
}

TEST_F(X11EventMonitorsTest, bothAltKeysTogetherAreOneOptionUntilTheLastGoes) {
    watch(eventMask::flagsChanged);
    keyboard.down(key::leftAlt);
    keyboard.down(key::rightAlt);
    keyboard.up(key::leftAlt);
    keyboard.up(key::rightAlt);
    settle();
    EXPECT_THAT(flags, ElementsAre(0x80000, 0x80000, 0x80000, 0));
}

TEST_F(X11EventMonitorsTest, theKeyOfTheThirdLevelIsNoOption) {
    ASSERT_TRUE(run("setxkbmap de"));
    watch(eventMask::flagsChanged);
    keyboard.tap(key::rightAlt);
    keyboard.down(key::rightAlt);
    keyboard.tap(key::leftAlt);
    keyboard.up(key::rightAlt);
    settle();
    EXPECT_THAT(flags, ElementsAre(0x800000, 0, 0x800000, 0x880000, 0x800000, 0));
}

TEST_F(X11EventMonitorsTest, aLayoutThatChangesWhileWatchedIsFollowed) {
    watch(eventMask::flagsChanged);
    ASSERT_TRUE(run("setxkbmap de"));
    settle();
    flags.clear();
    keyboard.tap(key::rightAlt);
    settle();
    EXPECT_THAT(flags, ElementsAre(0x800000, 0));
}

TEST_F(X11EventMonitorsTest, theSecondGroupOfALayoutIsFollowed) {
    ASSERT_TRUE(run("setxkbmap -layout us,de -option grp:menu_toggle"));
    watch(eventMask::flagsChanged);
    keyboard.tap(key::rightAlt);
    keyboard.tap(135);
    keyboard.tap(key::rightAlt);
    keyboard.tap(135);
    settle();
    EXPECT_THAT(flags, ElementsAre(0x80000, 0, 0x800000, 0));
}

TEST_F(X11EventMonitorsTest, swappedKeysAreTakenAsTheyAreMapped) {
    ASSERT_TRUE(run("setxkbmap -option altwin:swap_alt_win"));
    watch(eventMask::flagsChanged);
    keyboard.tap(key::leftAlt);
    keyboard.tap(key::leftSuper);
    settle();
    EXPECT_THAT(flags, ElementsAre(0x100000, 0, 0x80000, 0));
}

TEST_F(X11EventMonitorsTest, aModifierThatGoesDownTwiceAndUpTwiceIsOnePress) {
    watch(eventMask::flagsChanged);
    keyboard.down(key::leftAlt);
    keyboard.down(key::leftAlt);
    keyboard.up(key::leftAlt);
    keyboard.up(key::leftAlt);
    settle();
    EXPECT_THAT(flags, ElementsAre(0x80000, 0));
}

TEST_F(X11EventMonitorsTest, capsLockIsAFlagWhileItIsOn) {
    watch(eventMask::flagsChanged);
    keyboard.tap(key::capsLock);
    keyboard.tap(key::leftAlt);
    keyboard.tap(key::capsLock);
    settle();
    EXPECT_THAT(flags, ElementsAre(0x10000, 0x90000, 0x10000, 0));
}

TEST_F(X11EventMonitorsTest, numLockIsNoFlag) {
    keyboard.tap(key::numLock);
    watch(eventMask::flagsChanged);
    keyboard.tap(key::leftAlt);
    keyboard.tap(key::numLock);
    settle();
    EXPECT_THAT(flags, ElementsAre(0x80000, 0));
}

TEST_F(X11EventMonitorsTest, aKeyHeldBeforeTheWatchingBeganCounts) {
    keyboard.down(key::leftShift);
    watch(eventMask::flagsChanged);
    keyboard.down(key::leftAlt);
    settle();
    EXPECT_THAT(flags, ElementsAre(0xA0000));
}

TEST_F(X11EventMonitorsTest, modifiersAreToldUnderTheGrabOfAnotherProgram) {
    watch(eventMask::flagsChanged);
    ASSERT_TRUE(keyboard.grabKeyboard());
    keyboard.tap(key::leftAlt);
    settle();
    keyboard.ungrabKeyboard();
    EXPECT_THAT(flags, ElementsAre(0x80000, 0));
}

TEST_F(X11EventMonitorsTest, keysAreToldByTheirPosition) {
    watch(eventMask::keyDown);
    keyboard.tap(key::escape);
    keyboard.tap(key::v);
    keyboard.tap(key::leftShift);
    settle();
    EXPECT_THAT(keys, ElementsAre(53, 9));
}

TEST_F(X11EventMonitorsTest, clicksAreToldWhileAnotherProgramHoldsThePointer) {
    watch(eventMask::leftMouseDown | eventMask::rightMouseDown);
    ASSERT_TRUE(keyboard.grabPointer());
    keyboard.click(1, 300, 300);
    keyboard.click(3, 300, 300);
    keyboard.click(2, 300, 300);
    keyboard.click(4, 300, 300);
    settle();
    keyboard.ungrabPointer();
    EXPECT_THAT(types, ElementsAre(eventMask::leftMouseDown, eventMask::rightMouseDown));
}

TEST_F(X11EventMonitorsTest, aMonitorThatEndedIsNotCalled) {
    watch(eventMask::flagsChanged);
    keyboard.tap(key::leftAlt);
    monitor.reset();
    settle();
    EXPECT_THAT(flags, IsEmpty());
}

TEST_F(X11EventMonitorsTest, aMonitorMayEndItselfAndAnotherWhileItIsCalled) {
    std::unique_ptr<EventMonitor> second;
    int calls = 0;
    monitor = monitors.addGlobalMonitor(eventMask::flagsChanged, [&](const InputEvent &) {
        ++calls;
        second.reset();
        monitor.reset();
    });
    second = monitors.addGlobalMonitor(eventMask::flagsChanged, [&](const InputEvent &) { calls += 100; });
    keyboard.tap(key::leftAlt);
    settle();
    EXPECT_EQ(calls, 1);
}

/// A window of this program that a key closes.
class ClosedByAKey final : public QRasterWindow {
protected:
    void keyPressEvent(QKeyEvent *) override {
        hide();
        // The raw event of the key is read when no window of ours has the keyboard any more.
        QElapsedTimer clock;
        for (clock.start(); QGuiApplication::focusWindow() && clock.elapsed() < 1000;)
            QCoreApplication::sendPostedEvents();
    }
};

TEST_F(X11EventMonitorsTest, aKeyThatClosesAWindowOfOursIsNoKeyOfAnotherProgram) {
    watch(eventMask::keyDown);
    for (int times = 0; times < 10; ++times) {
        ClosedByAKey window;
        window.show();
        ASSERT_TRUE(testing::comesToTheFront(window));
        settle();
        keyboard.tap(key::escape);
        QThread::msleep(30); // both roads have it before either is read
        ASSERT_TRUE(waitUntil([&] { return !window.isVisible(); }));
        settle();
    }
    EXPECT_THAT(keys, IsEmpty());
}

/// The whole way of a double tap, on the real clock, while another program holds the keyboard.
class DoubleTapUnderAGrab : public X11EventMonitorsTest {
protected:
    void SetUp() override {
        X11EventMonitorsTest::SetUp();
        defaults.set(QStringLiteral("clipboardHotkeyMode"), QStringLiteral("doubleOption"));
        center.registerHotkeys();
        ASSERT_TRUE(keyboard.grabKeyboard());
    }
    void TearDown() override {
        keyboard.ungrabKeyboard();
        X11EventMonitorsTest::TearDown();
    }
    /// Two taps with that much between the presses.
    void tapTwice(int keycode, std::chrono::milliseconds apart) {
        QElapsedTimer clock;
        clock.start();
        keyboard.tap(keycode);
        (void)waitUntil([&] { return clock.elapsed() >= apart.count(); });
        keyboard.tap(keycode);
        settle();
    }

    QTemporaryDir folder;
    QtTime time;
    NotificationCenter notifications;
    UserDefaults defaults{folder.filePath(QStringLiteral("preferences.plist")), time, notifications};
    FakeHotKeys hotKeys;
    int toggles = 0;
    HotKeyCenter center{hotKeys,
                        monitors,
                        defaults,
                        time,
                        {.isFeatureOn = [](Trigger) { return true; },
                         .open = [this](Trigger) { ++toggles; },
                         .mayCaptureScreen = [] { return true; },
                         .isPasting = [] { return false; },
                         .refreshEmojiMenuEntry = [] {},
                         .refreshClipboardMenuEntry = [] {}}};
};

TEST_F(DoubleTapUnderAGrab, twoTapsCloseTogetherFire) {
    tapTwice(key::leftAlt, 200ms);
    EXPECT_EQ(toggles, 1);
}

TEST_F(DoubleTapUnderAGrab, twoTapsFarApartDoNotFire) {
    tapTwice(key::leftAlt, 600ms);
    EXPECT_EQ(toggles, 0);
}

TEST_F(DoubleTapUnderAGrab, theRightAltCountsAsTheLeft) {
    keyboard.tap(key::leftAlt);
    keyboard.tap(key::rightAlt);
    settle();
    EXPECT_EQ(toggles, 1);
}

TEST_F(DoubleTapUnderAGrab, theKeyOfTheThirdLevelDoesNotFire) {
    ASSERT_TRUE(run("setxkbmap de"));
    settle();
    tapTwice(key::rightAlt, 100ms);
    EXPECT_EQ(toggles, 0);
}

} // namespace
} // namespace tavrine
