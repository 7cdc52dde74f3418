#include "adapters/x11/X11EventMonitors.h"

#include "adapters/fake/FakeHotKeys.h"
#include "adapters/linux/QtTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "shell/HotKeyCenter.h"
#include "support/RawPresses.h"
#include "support/TestKeyboard.h"
#include "support/Wait.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
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
            if (event.keyCode == markCode)
                return;
            flags.push_back(event.modifierFlags);
            keys.push_back(event.keyCode);
            types.push_back(event.type);
        });
    }
    /// Another key, which nobody else here presses, after all that was done: once it is told, everything before it has
    /// been.
    void settle() {
        bool isTold = false;
        const auto mark = monitors.addGlobalMonitor(
            eventMask::keyDown, [&](const InputEvent &event) { isTold = isTold || event.keyCode == markCode; });
        keyboard.tap(markKey);
        EXPECT_TRUE(waitUntil([&] { return isTold; }));
    }
    static constexpr int markKey = 96; // F12
    static constexpr int markCode = 111;

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
    EXPECT_TRUE(waitUntil([&] { // a map is read once it stays
        flags.clear();
        keyboard.tap(key::rightAlt);
        settle();
        return flags == std::vector<quint32>{0x800000, 0};
    }));
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

/// The toolkit may have a press before we read its raw event, and so a window that the key closed may be gone by then.
TEST_F(X11EventMonitorsTest, aKeyThatClosesAWindowOfOursIsNoKeyOfAnotherProgram) {
    watch(eventMask::keyDown);
    testing::RawPresses presses;
    for (const quint32 later : {0, 1}) { // the server looks at its clock again for what windows get
        QRasterWindow closed;
        keyboard.tap(key::escape);
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        press.setTimestamp(presses.next() + later);
        QCoreApplication::sendEvent(&closed, &press);
        QThread::msleep(3); // what comes next is later than that
        settle();
        EXPECT_THAT(keys, IsEmpty()) << later;
        (void)presses.next(); // the mark's
    }
    keyboard.tap(key::v); // and one of another program's
    settle();
    EXPECT_THAT(keys, ElementsAre(9));
}

TEST_F(X11EventMonitorsTest, aPressThatClosesAWindowOfOursIsNoPressOnAnotherProgram) {
    watch(eventMask::leftMouseDown);
    keyboard.movePointer(1000, 600);
    testing::RawPresses presses;
    for (const quint32 later : {0, 1}) {
        QRasterWindow closed;
        keyboard.click(1, 1000, 600);
        QMouseEvent press(QEvent::MouseButtonPress, QPointF(), QPointF(), Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        press.setTimestamp(presses.next() + later);
        QCoreApplication::sendEvent(&closed, &press);
        QThread::msleep(3); // what comes next is later than that
        settle();
        EXPECT_THAT(types, IsEmpty()) << later;
        (void)presses.next(); // the mark's
    }
    keyboard.click(1, 1000, 600);
    settle();
    EXPECT_THAT(types, ElementsAre(eventMask::leftMouseDown));
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
    /// Two taps with that much between the word of the first and the press of the second.
    void tapTwice(int keycode, std::chrono::milliseconds apart) {
        keyboard.tap(keycode);
        if (apart > 0ms) {
            finish();
            (void)waitUntil([] { return false; }, apart);
        }
        keyboard.tap(keycode);
        finish();
    }
    /// What was told has been done, a turn later.
    void finish() {
        settle();
        bool isDone = false;
        time.async([&] { isDone = true; });
        EXPECT_TRUE(waitUntil([&] { return isDone; }));
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
    tapTwice(key::leftAlt, 0ms);
    EXPECT_EQ(toggles, 1);
}

TEST_F(DoubleTapUnderAGrab, twoTapsFarApartDoNotFire) {
    tapTwice(key::leftAlt, 600ms);
    EXPECT_EQ(toggles, 0);
}

TEST_F(DoubleTapUnderAGrab, theRightAltCountsAsTheLeft) {
    keyboard.tap(key::leftAlt);
    keyboard.tap(key::rightAlt);
    finish();
    EXPECT_EQ(toggles, 1);
}

TEST_F(DoubleTapUnderAGrab, theKeyOfTheThirdLevelDoesNotFire) {
    watch(eventMask::flagsChanged);
    ASSERT_TRUE(run("setxkbmap de"));
    ASSERT_TRUE(waitUntil([&] {
        flags.clear();
        keyboard.tap(key::rightAlt);
        settle();
        return flags == std::vector<quint32>{0x800000, 0};
    }));
    finish();
    toggles = 0;
    tapTwice(key::rightAlt, 0ms);
    EXPECT_EQ(toggles, 0);
    // Which is the layout's doing: the other Alt still fires.
    tapTwice(key::leftAlt, 0ms);
    EXPECT_EQ(toggles, 1);
}

} // namespace
} // namespace tavrine
