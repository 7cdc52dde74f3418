#include "shell/HotKeyCenter.h"

#include "adapters/fake/FakeEventMonitors.h"
#include "adapters/fake/FakeHotKeys.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"

#include <QStringList>
#include <QTemporaryDir>

#include <set>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr quint32 commandShift = hotKeyModifier::command | hotKeyModifier::shift;

QString nameOf(Trigger trigger) {
    switch (trigger) {
    case Trigger::clipboard:
        return QStringLiteral("clipboard");
    case Trigger::emojiPicker:
        return QStringLiteral("emoji");
    case Trigger::capture:
        return QStringLiteral("snip");
    case Trigger::screenRecorder:
        break;
    }
    return QStringLiteral("record");
}

class HotKeyCenterTest : public ::testing::Test {
protected:
    void set(const char *key, const char *value) { defaults.set(QLatin1String(key), QString::fromUtf8(value)); }
    void switchOff(Trigger trigger) { off.insert(trigger); }
    std::vector<quint32> ids() const {
        std::vector<quint32> all;
        for (const auto &registration : hotKeys.registrations())
            all.push_back(registration.id.id);
        return all;
    }
    int keyCodeOf(quint32 id) const {
        for (const auto &registration : hotKeys.registrations())
            if (registration.id.id == id)
                return registration.keyCode;
        return -1;
    }
    void tapOption() {
        monitors.flags(modifierFlag::option);
        time.runPending();
        monitors.flags(0);
        time.runPending();
    }
    void doubleTap() {
        tapOption();
        time.advance(200ms);
        tapOption();
    }
    std::string printedBy(const std::function<void()> &work) {
        ::testing::internal::CaptureStdout();
        work();
        return ::testing::internal::GetCapturedStdout();
    }

    QTemporaryDir folder;
    VirtualTime time;
    NotificationCenter notifications;
    UserDefaults defaults{folder.filePath(QStringLiteral("preferences.plist")), time, notifications};
    FakeHotKeys hotKeys;
    FakeEventMonitors monitors;
    bool mayCapture = true;
    bool isPasting = false;
    int permissionQuestions = 0;
    std::set<Trigger> off;
    QStringList calls;
    HotKeyCenter center{hotKeys,
                        monitors,
                        defaults,
                        time,
                        {.isFeatureOn = [this](Trigger trigger) { return !off.contains(trigger); },
                         .open = [this](Trigger trigger) { calls << nameOf(trigger); },
                         .mayCaptureScreen =
                             [this] {
                                 ++permissionQuestions;
                                 return mayCapture;
                             },
                         .isPasting = [this] { return isPasting; },
                         .refreshEmojiMenuEntry = [this] { calls << QStringLiteral("emoji entry"); },
                         .refreshClipboardMenuEntry = [this] { calls << QStringLiteral("clipboard entry"); }}};
};

TEST_F(HotKeyCenterTest, aFreshInstallRegistersTheFourDefaultsInTheirOrder) {
    center.registerHotkeys();
    EXPECT_THAT(hotKeys.registrations(), ElementsAre(FakeHotKeys::Registration{9, 768, {0x47534373, 1}},
                                                     FakeHotKeys::Registration{14, 768, {0x47534373, 2}},
                                                     FakeHotKeys::Registration{19, 768, {0x47534373, 6}},
                                                     FakeHotKeys::Registration{22, 768, {0x47534373, 7}}));
}

TEST_F(HotKeyCenterTest, registeringPrintsALineForEachHotKey) {
    EXPECT_EQ(printedBy([&] { center.registerHotkeys(); }), "DEBUG: Hotkey registered successfully for ID: 1\n"
                                                            "DEBUG: Hotkey registered successfully for ID: 2\n"
                                                            "DEBUG: Hotkey registered successfully for ID: 6\n"
                                                            "DEBUG: Hotkey registered successfully for ID: 7\n");
}

TEST_F(HotKeyCenterTest, theKeysAfterAPanelsPressAreThePanelsUnlessAPasteIsStillToBeTyped) {
    for (const quint32 panel : {1U, 2U}) {
        isPasting = false;
        EXPECT_EQ(center.handleHotKey(panel), KeyboardNext::ourWindow);
        isPasting = true;
        EXPECT_EQ(center.handleHotKey(panel), KeyboardNext::asBefore);
    }
    EXPECT_EQ(calls.join(u' '), QStringLiteral("clipboard clipboard emoji emoji"));
}

TEST_F(HotKeyCenterTest, aTakenCombinationIsPrintedAndSkipped) {
    hotKeys.takeElsewhere(14, commandShift);
    EXPECT_THAT(printedBy([&] { center.registerHotkeys(); }), HasSubstr("DEBUG: Failed to register hotkey ID: 2\n"));
    EXPECT_THAT(ids(), ElementsAre(1, 6, 7));
}

TEST_F(HotKeyCenterTest, aTakenCombinationIsTriedAgainAtTheNextRegistering) {
    hotKeys.takeElsewhere(14, commandShift);
    center.registerHotkeys();
    hotKeys.freeElsewhere(14, commandShift);
    center.registerHotkeys();
    EXPECT_THAT(ids(), ElementsAre(1, 2, 6, 7));
}

TEST_F(HotKeyCenterTest, twoToolsWithOneKeyLeaveTheSecondWithoutAHotKey) {
    set("emojiHotkeyKey", "V");
    center.registerHotkeys();
    EXPECT_THAT(ids(), ElementsAre(1, 6, 7));
}

TEST_F(HotKeyCenterTest, registeringAgainReplacesWhatWasRegistered) {
    center.registerHotkeys();
    set("HotkeyCharacter", "b");
    center.registerHotkeys();
    EXPECT_THAT(ids(), ElementsAre(1, 2, 6, 7));
    EXPECT_EQ(keyCodeOf(1), 11);
}

TEST_F(HotKeyCenterTest, theHandlerIsInstalledEvenWithoutAHotKey) {
    off = {Trigger::clipboard, Trigger::emojiPicker, Trigger::capture, Trigger::screenRecorder};
    center.registerHotkeys();
    EXPECT_TRUE(hotKeys.hasHandler());
    EXPECT_THAT(ids(), IsEmpty());
}

TEST_F(HotKeyCenterTest, eachFlagTakesItsHotKeyAway) {
    const std::pair<Trigger, std::vector<quint32>> rows[] = {{Trigger::clipboard, {2, 6, 7}},
                                                             {Trigger::emojiPicker, {1, 6, 7}},
                                                             {Trigger::capture, {1, 2, 7}},
                                                             {Trigger::screenRecorder, {1, 2, 6}}};
    for (const auto &[trigger, left] : rows) {
        off = {trigger};
        center.registerHotkeys();
        EXPECT_EQ(ids(), left);
    }
}

TEST_F(HotKeyCenterTest, theDoubleTapTakesThePlaceOfTheHotKey) {
    set("clipboardHotkeyMode", "doubleOption");
    center.registerHotkeys();
    EXPECT_THAT(ids(), ElementsAre(2, 6, 7));
    EXPECT_EQ(monitors.globalCount(), 1);
    EXPECT_EQ(monitors.localCount(), 1);
}

TEST_F(HotKeyCenterTest, aModeThatIsNeitherValueGivesNoHotKeyAndNoMonitors) {
    set("emojiHotkeyMode", "shakeTheMouse");
    center.registerHotkeys();
    EXPECT_THAT(ids(), ElementsAre(1, 6, 7));
    EXPECT_EQ(monitors.globalCount() + monitors.localCount(), 0);
}

TEST_F(HotKeyCenterTest, modesAndKeysOfTheWrongTypeCountAsAbsent) {
    for (const char *key : {"clipboardHotkeyMode", "emojiHotkeyMode", "screenRecordHotkeyMode"})
        defaults.set(QLatin1String(key), 7);
    defaults.set(QStringLiteral("HotkeyCharacter"), QByteArray("x"));
    defaults.set(QStringLiteral("emojiHotkeyKey"), true);
    defaults.set(QStringLiteral("snipHotkey"), 5.0);
    center.registerHotkeys();
    EXPECT_THAT(ids(), ElementsAre(1, 2, 6, 7));
    EXPECT_EQ(keyCodeOf(1), 9);
    EXPECT_EQ(keyCodeOf(2), 14);
    EXPECT_EQ(keyCodeOf(6), 19);
}

TEST_F(HotKeyCenterTest, theMenuEntriesAreRefreshedEmojiFirst) {
    center.registerHotkeys();
    EXPECT_EQ(calls, QStringList({QStringLiteral("emoji entry"), QStringLiteral("clipboard entry")}));
}

TEST_F(HotKeyCenterTest, anEmptyStoredKeyCountsAsTheToolsOwn) {
    set("HotkeyCharacter", "");
    set("emojiHotkeyKey", "");
    center.registerHotkeys();
    EXPECT_EQ(keyCodeOf(1), 9);
    EXPECT_EQ(keyCodeOf(2), 14);
}

TEST_F(HotKeyCenterTest, aPunctuationCharacterRegistersTheKeyOfTwo) {
    switchOff(Trigger::capture);
    set("screenRecordHotkey", ";");
    center.registerHotkeys();
    EXPECT_EQ(keyCodeOf(7), 19);
}

TEST_F(HotKeyCenterTest, ofALongerStoredTextTheFirstCharacterCounts) {
    set("emojiHotkeyKey", "qx");
    center.registerHotkeys();
    EXPECT_EQ(keyCodeOf(2), 12);
}

TEST_F(HotKeyCenterTest, eachHotKeyOpensItsTool) {
    center.registerHotkeys();
    calls.clear();
    for (const int key : {9, 14, 19, 22})
        hotKeys.press(key, commandShift);
    EXPECT_EQ(calls.join(QLatin1Char(' ')), QStringLiteral("clipboard emoji snip record"));
}

TEST_F(HotKeyCenterTest, aPressPrintsItsNumberAndTheTool) {
    EXPECT_EQ(printedBy([&] { center.handleHotKey(1); }), "DEBUG: Hotkey Handler Triggered for ID: 1\n");
    EXPECT_EQ(printedBy([&] { center.handleHotKey(6); }),
              "DEBUG: Hotkey Handler Triggered for ID: 6\nDEBUG: Screen Snipping\n");
    EXPECT_EQ(printedBy([&] { center.handleHotKey(7); }),
              "DEBUG: Hotkey Handler Triggered for ID: 7\nDEBUG: Screen Recording\n");
}

TEST_F(HotKeyCenterTest, numbersThatNoToolHasDoNothing) {
    for (const quint32 id : {0U, 3U, 4U, 5U, 8U})
        center.handleHotKey(id);
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(HotKeyCenterTest, aPressWhoseNumberCannotBeReadDoesNothing) {
    center.registerHotkeys();
    calls.clear();
    EXPECT_EQ(printedBy([&] { hotKeys.pressUnknown(0); }), "DEBUG: Hotkey Handler Triggered for ID: 0\n");
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(HotKeyCenterTest, aPressOfAToolThatIsOffDoesNothing) {
    off = {Trigger::clipboard, Trigger::emojiPicker, Trigger::capture, Trigger::screenRecorder};
    for (const quint32 id : {1U, 2U, 6U, 7U})
        center.handleHotKey(id);
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(HotKeyCenterTest, aCaptureWithoutPermissionIsNotStarted) {
    mayCapture = false;
    center.handleHotKey(6);
    EXPECT_EQ(permissionQuestions, 1);
    EXPECT_TRUE(calls.isEmpty());
    mayCapture = true;
    center.handleHotKey(6);
    EXPECT_EQ(calls, QStringList(QStringLiteral("snip")));
}

TEST_F(HotKeyCenterTest, theRecorderIsStartedWithoutAskingForPermissionHere) {
    center.handleHotKey(7);
    EXPECT_EQ(permissionQuestions, 0);
    EXPECT_EQ(calls, QStringList(QStringLiteral("record")));
}

TEST_F(HotKeyCenterTest, aDoubleTapOpensTheToolThatIsBoundToIt) {
    const std::pair<const char *, QString> rows[] = {{"clipboardHotkeyMode", QStringLiteral("clipboard")},
                                                     {"emojiHotkeyMode", QStringLiteral("emoji")},
                                                     {"screenRecordHotkeyMode", QStringLiteral("record")}};
    for (const auto &[key, call] : rows) {
        set(key, "doubleOption");
        center.registerHotkeys();
        calls.clear();
        doubleTap();
        EXPECT_EQ(calls, QStringList(call)) << key;
        set(key, "commandShift");
        center.registerHotkeys();
        time.advance(1s);
    }
}

TEST_F(HotKeyCenterTest, theTapOfAnotherProgramsTurnIsHandledInTheNextTurn) {
    set("clipboardHotkeyMode", "doubleOption");
    center.registerHotkeys();
    calls.clear();
    tapOption();
    time.advance(100ms);
    monitors.flags(modifierFlag::option);
    EXPECT_TRUE(calls.isEmpty());
    time.runPending();
    EXPECT_EQ(calls, QStringList(QStringLiteral("clipboard")));
}

TEST_F(HotKeyCenterTest, aDoubleTapWorksWhileThisProgramIsActive) {
    set("clipboardHotkeyMode", "doubleOption");
    center.registerHotkeys();
    calls.clear();
    monitors.setActive(true);
    doubleTap();
    EXPECT_EQ(calls, QStringList(QStringLiteral("clipboard")));
}

TEST_F(HotKeyCenterTest, theLocalMonitorLetsTheEventPass) {
    set("clipboardHotkeyMode", "doubleOption");
    center.registerHotkeys();
    monitors.setActive(true);
    EXPECT_FALSE(monitors.send(
        {.type = eventMask::flagsChanged, .modifierFlags = modifierFlag::option, .keyCode = -1, .scrollDelta = {}}));
}

TEST_F(HotKeyCenterTest, noDoubleTapFiresWhileTwoToolsShareIt) {
    const char *keys[] = {"clipboardHotkeyMode", "emojiHotkeyMode", "screenRecordHotkeyMode"};
    for (int left = 0; left < 3; ++left) {
        for (int i = 0; i < 3; ++i)
            set(keys[i], i == left ? "commandShift" : "doubleOption");
        center.registerHotkeys();
        calls.clear();
        doubleTap();
        EXPECT_TRUE(calls.isEmpty()) << keys[left];
        time.advance(1s);
    }
}

TEST_F(HotKeyCenterTest, aToolThatIsOffBlocksTheDoubleTapOfAnotherToo) {
    set("clipboardHotkeyMode", "doubleOption");
    set("emojiHotkeyMode", "doubleOption");
    switchOff(Trigger::emojiPicker);
    center.registerHotkeys();
    calls.clear();
    doubleTap();
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(HotKeyCenterTest, aToolSwitchedOffWithItsMonitorsStillUpDoesNotFire) {
    set("clipboardHotkeyMode", "doubleOption");
    center.registerHotkeys();
    calls.clear();
    switchOff(Trigger::clipboard);
    doubleTap();
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(HotKeyCenterTest, aModeChangedWithTheMonitorsStillUpDoesNotFire) {
    set("clipboardHotkeyMode", "doubleOption");
    center.registerHotkeys();
    calls.clear();
    set("clipboardHotkeyMode", "commandShift");
    doubleTap();
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(HotKeyCenterTest, registeringAgainKeepsTheMonitorsAndTheFirstTap) {
    set("clipboardHotkeyMode", "doubleOption");
    center.registerHotkeys();
    tapOption();
    center.registerHotkeys();
    calls.clear();
    EXPECT_EQ(monitors.globalCount(), 1);
    time.advance(200ms);
    tapOption();
    EXPECT_EQ(calls, QStringList(QStringLiteral("clipboard")));
}

TEST_F(HotKeyCenterTest, leavingTheModeRemovesTheMonitorsAndForgetsTheFirstTap) {
    set("clipboardHotkeyMode", "doubleOption");
    center.registerHotkeys();
    tapOption();
    set("clipboardHotkeyMode", "commandShift");
    center.registerHotkeys();
    EXPECT_EQ(monitors.globalCount() + monitors.localCount(), 0);
    set("clipboardHotkeyMode", "doubleOption");
    center.registerHotkeys();
    calls.clear();
    tapOption();
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(HotKeyCenterTest, theEndOfTheCenterFreesItsHotKeys) {
    {
        HotKeyCenter other(hotKeys, monitors, defaults, time,
                           {.isFeatureOn = [](Trigger) { return true; },
                            .open = [](Trigger) {},
                            .mayCaptureScreen = [] { return true; },
                            .isPasting = [] { return false; },
                            .refreshEmojiMenuEntry = [] {},
                            .refreshClipboardMenuEntry = [] {}});
        other.registerHotkeys();
    }
    EXPECT_THAT(ids(), IsEmpty());
    EXPECT_FALSE(hotKeys.hasHandler());
}

TEST(KeyCode, everyLetterAndDigitHasItsPosition) {
    const std::pair<const char *, int> rows[] = {
        {"A", 0},  {"B", 11}, {"C", 8},  {"D", 2},  {"E", 14}, {"F", 3},  {"G", 5},  {"H", 4},  {"I", 34},
        {"J", 38}, {"K", 40}, {"L", 37}, {"M", 46}, {"N", 45}, {"O", 31}, {"P", 35}, {"Q", 12}, {"R", 15},
        {"S", 1},  {"T", 17}, {"U", 32}, {"V", 9},  {"W", 13}, {"X", 7},  {"Y", 16}, {"Z", 6},  {"0", 29},
        {"1", 18}, {"2", 19}, {"3", 20}, {"4", 21}, {"5", 23}, {"6", 22}, {"7", 26}, {"8", 28}, {"9", 25}};
    for (const auto &[character, code] : rows)
        EXPECT_EQ(keyCode(QString::fromLatin1(character)), code) << character;
}

TEST(KeyCode, anythingElseIsTheKeyOfTwo) {
    for (const char *character : {"", ";", "@", "[", "/", ":", "`", "v", "é", "😀", "AB"})
        EXPECT_EQ(keyCode(QString::fromUtf8(character)), 19) << character;
}

TEST(FirstUppercase, keepsOneCharacter) {
    EXPECT_EQ(firstUppercase(QStringLiteral("ab")), QStringLiteral("A"));
    EXPECT_EQ(firstUppercase(QStringLiteral("7x")), QStringLiteral("7"));
    EXPECT_EQ(firstUppercase(QStringLiteral("ßa")), QStringLiteral("S"));
    EXPECT_EQ(firstUppercase(QStringLiteral("😀a")), QStringLiteral("😀"));
    EXPECT_EQ(firstUppercase(QString()), QString());
}

// Taps that the desktop tells.

TEST_F(HotKeyCenterTest, twoToldTapsInTimeOpenTheToolAndAThirdStartsANewPair) {
    set("clipboardHotkeyMode", "doubleOption");
    center.registerHotkeys();
    calls.clear();
    center.optionTapped();
    time.advance(450ms);
    center.optionTapped();
    EXPECT_EQ(calls, QStringList(QStringLiteral("clipboard")));
    time.advance(100ms);
    center.optionTapped();
    time.advance(451ms);
    center.optionTapped();
    EXPECT_EQ(calls, QStringList(QStringLiteral("clipboard")));
}

TEST_F(HotKeyCenterTest, toldTapsOpenNothingThatIsOffOrSetToAnotherTrigger) {
    set("emojiHotkeyMode", "doubleOption");
    switchOff(Trigger::emojiPicker);
    center.registerHotkeys();
    calls.clear();
    center.optionTapped();
    center.optionTapped();
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(HotKeyCenterTest, aTapThatIsToldAndHeardCountsOnce) {
    set("clipboardHotkeyMode", "doubleOption");
    center.registerHotkeys();
    calls.clear();
    center.optionTapped();
    time.advance(1s);
    tapOption(); // by a window of the program, which has the keyboard
    center.optionTapped();
    EXPECT_TRUE(calls.isEmpty());
    time.advance(200ms);
    tapOption();
    center.optionTapped();
    EXPECT_EQ(calls, QStringList(QStringLiteral("clipboard")));
}

// Keys that another program keeps.

TEST_F(HotKeyCenterTest, aKeyThatTurnsOutToBeTakenIsToldAndOneThatHoldsAfterAllToo) {
    int changes = 0;
    QObject::connect(&center, &HotKeyCenter::heldChanged, &center, [&] { ++changes; });
    center.registerHotkeys();
    EXPECT_FALSE(center.isTakenElsewhere(Trigger::emojiPicker));
    EXPECT_EQ(printedBy([&] { hotKeys.tellHeld(14, commandShift, false); }),
              "DEBUG: Failed to register hotkey ID: 2\n");
    EXPECT_TRUE(center.isTakenElsewhere(Trigger::emojiPicker));
    EXPECT_FALSE(center.isTakenElsewhere(Trigger::clipboard));
    hotKeys.tellHeld(14, commandShift, true);
    EXPECT_FALSE(center.isTakenElsewhere(Trigger::emojiPicker));
    EXPECT_EQ(changes, 2);
}

TEST_F(HotKeyCenterTest, noOtherProgramIsBlamedWhereADesktopGivesNobodyHotKeys) {
    hotKeys.takeElsewhere(14, commandShift);
    center.registerHotkeys();
    EXPECT_TRUE(center.isTakenElsewhere(Trigger::emojiPicker));
    hotKeys.setTraits({.availability = HotKeyAvailability::none});
    center.registerHotkeys();
    EXPECT_FALSE(center.isTakenElsewhere(Trigger::emojiPicker));
}

TEST_F(HotKeyCenterTest, eachHotKeyHasATitleForTheDesktopsSettings) {
    EXPECT_EQ(hotKeys.title(1), QStringLiteral("Search the Clipboard"));
    EXPECT_EQ(hotKeys.title(2), QStringLiteral("Pick an Emoji"));
    EXPECT_EQ(hotKeys.title(6), QStringLiteral("Capture a Region"));
    EXPECT_EQ(hotKeys.title(7), QStringLiteral("Record the Screen"));
}

} // namespace
} // namespace tavrine
