#include "shell/ShortcutEditor.h"

#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "shell/ShortcutConflicts.h"

#include <QTemporaryDir>

#include <memory>
#include <set>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

class ShortcutEditorTest : public ::testing::Test {
protected:
    void set(const char *key, const char *value) { defaults.set(QLatin1String(key), QString::fromUtf8(value)); }
    QString stored(const char *key) const { return defaults.get<QString>(QLatin1String(key), QString()); }
    std::unique_ptr<ShortcutEditor> edit(Trigger trigger) {
        return std::make_unique<ShortcutEditor>(
            trigger, defaults, time,
            ShortcutEditor::Actions{.isFeatureOn = [this](Trigger other) { return !off.contains(other); },
                                    .registerHotkeys = [this] { ++registrations; },
                                    .setHotkeyCharacter = [this](const QString &key) { hotkeyCharacter = key; },
                                    .isTakenElsewhere = [this](Trigger asked) { return taken.contains(asked); }});
    }
    QString conflictOf(Trigger trigger, const char *key) {
        const auto editor = edit(trigger);
        editor->setDraftKey(QString::fromUtf8(key));
        return editor->conflict() ? editor->conflict()->message : QString();
    }
    QString doubleTapConflictOf(Trigger trigger) {
        const auto editor = edit(trigger);
        editor->setDraftMode(triggerMode::doubleOption);
        return editor->conflict() ? editor->conflict()->message : QString();
    }

    QTemporaryDir folder;
    VirtualTime time;
    NotificationCenter notifications;
    UserDefaults defaults{folder.filePath(QStringLiteral("preferences.plist")), time, notifications};
    std::set<Trigger> off;
    std::set<Trigger> taken;
    QString hotkeyCharacter;
    int registrations = 0;
};

const QString clipboardTwice = QStringLiteral("Clipboard already uses ⌥ twice — pick a different shortcut");
const QString emojiTwice = QStringLiteral("Emoji Picker already uses ⌥ twice — pick a different shortcut");
const QString recordTwice = QStringLiteral("Screen Record already uses ⌥ twice — pick a different shortcut");

TEST_F(ShortcutEditorTest, appearingLoadsTheDefaultsInUpperCase) {
    const std::pair<Trigger, const char *> rows[] = {{Trigger::clipboard, "V"},
                                                     {Trigger::emojiPicker, "E"},
                                                     {Trigger::capture, "2"},
                                                     {Trigger::screenRecorder, "6"}};
    for (const auto &[trigger, key] : rows) {
        const auto editor = edit(trigger);
        EXPECT_EQ(editor->draftKey(), QString::fromUtf8(key));
        EXPECT_EQ(editor->committedKey(), QString::fromUtf8(key));
        EXPECT_EQ(editor->draftMode(), QStringLiteral("commandShift"));
        EXPECT_EQ(editor->committedMode(), QStringLiteral("commandShift"));
        EXPECT_FALSE(editor->showsSaveControl());
    }
}

TEST_F(ShortcutEditorTest, appearingLoadsWhatIsStored) {
    set("HotkeyCharacter", "b");
    set("clipboardHotkeyMode", "doubleOption");
    const auto editor = edit(Trigger::clipboard);
    EXPECT_EQ(editor->draftKey(), QStringLiteral("B"));
    EXPECT_EQ(editor->draftMode(), QStringLiteral("doubleOption"));
}

TEST_F(ShortcutEditorTest, aFieldGivenTwoLettersKeepsTheFirstInUpperCase) {
    const auto editor = edit(Trigger::clipboard);
    editor->setDraftKey(QStringLiteral("bx"));
    EXPECT_EQ(editor->draftKey(), QStringLiteral("B"));
}

TEST_F(ShortcutEditorTest, anEmptyFieldChangesNothing) {
    const auto editor = edit(Trigger::clipboard);
    editor->setDraftKey(QStringLiteral("3"));
    editor->setDraftKey(QString());
    EXPECT_EQ(editor->draftKey(), QStringLiteral("3"));
    EXPECT_TRUE(editor->conflict());
}

TEST_F(ShortcutEditorTest, theSystemsKeysConflictInEveryEditor) {
    for (const Trigger trigger : allTriggers) {
        EXPECT_EQ(conflictOf(trigger, "3"), QStringLiteral("macOS's screenshot shortcut (⌘⇧3)"));
        EXPECT_EQ(conflictOf(trigger, "4"), QStringLiteral("macOS's screenshot shortcut (⌘⇧4)"));
        EXPECT_EQ(conflictOf(trigger, "5"), QStringLiteral("macOS's Screenshot app shortcut (⌘⇧5)"));
        EXPECT_EQ(conflictOf(trigger, "7"), QString());
    }
}

TEST_F(ShortcutEditorTest, theCaptureMayNotTakeTheKeyOfAnyOther) {
    EXPECT_EQ(conflictOf(Trigger::capture, "v"), QStringLiteral("Clipboard History uses ⌘⇧V"));
    EXPECT_EQ(conflictOf(Trigger::capture, "e"), QStringLiteral("Emoji Picker uses ⌘⇧E"));
    EXPECT_EQ(conflictOf(Trigger::capture, "6"), QStringLiteral("Screen Record uses ⌘⇧6"));
    EXPECT_EQ(conflictOf(Trigger::capture, "2"), QString());
}

TEST_F(ShortcutEditorTest, theRecorderMayNotTakeTheKeyOfAnyOther) {
    EXPECT_EQ(conflictOf(Trigger::screenRecorder, "2"), QStringLiteral("Snipper uses ⌘⇧2"));
    EXPECT_EQ(conflictOf(Trigger::screenRecorder, "v"), QStringLiteral("Clipboard History uses ⌘⇧V"));
    EXPECT_EQ(conflictOf(Trigger::screenRecorder, "e"), QStringLiteral("Emoji Picker uses ⌘⇧E"));
    EXPECT_EQ(conflictOf(Trigger::screenRecorder, "6"), QString());
}

TEST_F(ShortcutEditorTest, theEmojiPickerMayNotTakeTheKeyOfAnyOther) {
    EXPECT_EQ(conflictOf(Trigger::emojiPicker, "2"), QStringLiteral("Snipper uses ⌘⇧2"));
    EXPECT_EQ(conflictOf(Trigger::emojiPicker, "v"), QStringLiteral("Clipboard History uses ⌘⇧V"));
    EXPECT_EQ(conflictOf(Trigger::emojiPicker, "6"), QStringLiteral("Screen Record uses ⌘⇧6"));
    EXPECT_EQ(conflictOf(Trigger::emojiPicker, "e"), QString());
}

TEST_F(ShortcutEditorTest, theClipboardMayNotTakeTheKeyOfAnyOther) {
    EXPECT_EQ(conflictOf(Trigger::clipboard, "2"), QStringLiteral("Snipper uses ⌘⇧2"));
    EXPECT_EQ(conflictOf(Trigger::clipboard, "e"), QStringLiteral("Emoji Picker uses ⌘⇧E"));
    EXPECT_EQ(conflictOf(Trigger::clipboard, "6"), QStringLiteral("Screen Record uses ⌘⇧6"));
    EXPECT_EQ(conflictOf(Trigger::clipboard, "v"), QString());
}

TEST_F(ShortcutEditorTest, theKeyOfAToolOnTheDoubleTapIsFree) {
    set("emojiHotkeyMode", "doubleOption");
    set("clipboardHotkeyMode", "doubleOption");
    EXPECT_EQ(conflictOf(Trigger::screenRecorder, "e"), QString());
    EXPECT_EQ(conflictOf(Trigger::capture, "v"), QString());
}

TEST_F(ShortcutEditorTest, theKeyOfAToolThatIsSwitchedOffStaysReserved) {
    off = {Trigger::emojiPicker, Trigger::capture};
    EXPECT_EQ(conflictOf(Trigger::clipboard, "e"), QStringLiteral("Emoji Picker uses ⌘⇧E"));
    EXPECT_EQ(conflictOf(Trigger::clipboard, "2"), QStringLiteral("Snipper uses ⌘⇧2"));
}

TEST_F(ShortcutEditorTest, ofTwoOwnersOfAKeyTheLaterInTheTableIsNamed) {
    set("snipHotkey", "3");
    EXPECT_EQ(conflictOf(Trigger::clipboard, "3"), QStringLiteral("macOS's screenshot shortcut (⌘⇧3)"));
    set("emojiHotkeyKey", "k");
    set("screenRecordHotkey", "k");
    EXPECT_EQ(conflictOf(Trigger::clipboard, "k"), QStringLiteral("Screen Record uses ⌘⇧K"));
    set("emojiHotkeyKey", "5");
    EXPECT_EQ(conflictOf(Trigger::clipboard, "5"), QStringLiteral("Emoji Picker uses ⌘⇧5"));
}

TEST_F(ShortcutEditorTest, theDoubleTapNamesTheFirstToolThatHasIt) {
    set("clipboardHotkeyMode", "doubleOption");
    set("emojiHotkeyMode", "doubleOption");
    set("screenRecordHotkeyMode", "doubleOption");
    EXPECT_EQ(doubleTapConflictOf(Trigger::screenRecorder), clipboardTwice);
    EXPECT_EQ(doubleTapConflictOf(Trigger::emojiPicker), clipboardTwice);
    EXPECT_EQ(doubleTapConflictOf(Trigger::clipboard), emojiTwice);
}

TEST_F(ShortcutEditorTest, theDoubleTapNamesTheSecondToolWhenTheFirstHasItNot) {
    set("screenRecordHotkeyMode", "doubleOption");
    EXPECT_EQ(doubleTapConflictOf(Trigger::emojiPicker), recordTwice);
    EXPECT_EQ(doubleTapConflictOf(Trigger::clipboard), recordTwice);
    set("screenRecordHotkeyMode", "commandShift");
    set("emojiHotkeyMode", "doubleOption");
    EXPECT_EQ(doubleTapConflictOf(Trigger::screenRecorder), emojiTwice);
}

TEST_F(ShortcutEditorTest, aToolThatIsSwitchedOffDoesNotHoldTheDoubleTap) {
    set("emojiHotkeyMode", "doubleOption");
    off = {Trigger::emojiPicker};
    EXPECT_EQ(doubleTapConflictOf(Trigger::clipboard), QString());
}

TEST_F(ShortcutEditorTest, aFreeDoubleTapIsNoConflict) {
    EXPECT_EQ(doubleTapConflictOf(Trigger::clipboard), QString());
}

TEST_F(ShortcutEditorTest, goingBackToTheHotKeyChecksItsKey) {
    const auto editor = edit(Trigger::clipboard);
    editor->setDraftKey(QStringLiteral("5"));
    editor->setDraftMode(triggerMode::doubleOption);
    EXPECT_FALSE(editor->conflict());
    editor->setDraftMode(triggerMode::commandShift);
    EXPECT_TRUE(editor->conflict());
}

TEST_F(ShortcutEditorTest, theBannerSaysInEveryEditorThatASystemsKeyCannotBeSaved) {
    for (const Trigger trigger : allTriggers) {
        const auto editor = edit(trigger);
        editor->setDraftKey(QStringLiteral("5"));
        EXPECT_EQ(
            editor->banner(),
            (ShortcutEditor::Banner{QStringLiteral("macOS's Screenshot app shortcut (⌘⇧5) — can't be saved"), true}));
        EXPECT_FALSE(editor->showsSaveControl());
    }
}

TEST_F(ShortcutEditorTest, theBannerNamesTheToolThatHasTheKey) {
    const auto editor = edit(Trigger::clipboard);
    editor->setDraftKey(QStringLiteral("e"));
    EXPECT_EQ(
        editor->banner(),
        (ShortcutEditor::Banner{QStringLiteral("Conflicts with Emoji Picker uses ⌘⇧E — pick a different key"), false}));
}

TEST_F(ShortcutEditorTest, theBannerShowsADoubleTapMessageAsItStands) {
    set("emojiHotkeyMode", "doubleOption");
    const auto editor = edit(Trigger::clipboard);
    editor->setDraftMode(triggerMode::doubleOption);
    EXPECT_EQ(editor->banner(), (ShortcutEditor::Banner{emojiTwice, false}));
}

TEST_F(ShortcutEditorTest, thereIsNoBannerWithoutAConflict) {
    EXPECT_FALSE(edit(Trigger::clipboard)->banner());
}

TEST_F(ShortcutEditorTest, anotherKeyIsAChange) {
    const auto editor = edit(Trigger::emojiPicker);
    EXPECT_FALSE(editor->hasChanges());
    editor->setDraftKey(QStringLiteral("k"));
    EXPECT_TRUE(editor->hasChanges());
    editor->setDraftKey(QStringLiteral("e"));
    EXPECT_FALSE(editor->hasChanges());
}

TEST_F(ShortcutEditorTest, anotherModeIsAChange) {
    const auto editor = edit(Trigger::emojiPicker);
    editor->setDraftMode(triggerMode::doubleOption);
    EXPECT_TRUE(editor->hasChanges());
}

TEST_F(ShortcutEditorTest, anotherKeyIsNoChangeWhileTheDoubleTapIsChosen) {
    set("emojiHotkeyMode", "doubleOption");
    const auto editor = edit(Trigger::emojiPicker);
    editor->setDraftKey(QStringLiteral("k"));
    EXPECT_FALSE(editor->hasChanges());
}

TEST_F(ShortcutEditorTest, aConflictIsNoChange) {
    const auto editor = edit(Trigger::capture);
    editor->setDraftKey(QStringLiteral("4"));
    EXPECT_FALSE(editor->hasChanges());
}

TEST_F(ShortcutEditorTest, savingStoresModeAndKeyAndRegistersAtOnce) {
    const auto editor = edit(Trigger::emojiPicker);
    editor->setDraftKey(QStringLiteral("k"));
    editor->save();
    EXPECT_EQ(stored("emojiHotkeyMode"), QStringLiteral("commandShift"));
    EXPECT_EQ(stored("emojiHotkeyKey"), QStringLiteral("K"));
    EXPECT_EQ(editor->committedKey(), QStringLiteral("K"));
    EXPECT_EQ(registrations, 1);
    EXPECT_EQ(editor->saveState(), HotkeySaveState::saving);
}

TEST_F(ShortcutEditorTest, theClipboardsKeyIsStoredByTheManager) {
    const auto editor = edit(Trigger::clipboard);
    editor->setDraftKey(QStringLiteral("k"));
    editor->save();
    EXPECT_EQ(hotkeyCharacter, QStringLiteral("K"));
    EXPECT_EQ(stored("HotkeyCharacter"), QString());
    EXPECT_EQ(stored("clipboardHotkeyMode"), QStringLiteral("commandShift"));
}

TEST_F(ShortcutEditorTest, theCaptureStoresItsKeyAlone) {
    const auto editor = edit(Trigger::capture);
    editor->setDraftKey(QStringLiteral("9"));
    editor->save();
    EXPECT_EQ(stored("snipHotkey"), QStringLiteral("9"));
    EXPECT_FALSE(defaults.contains(QStringLiteral("snipHotkeyMode")));
    EXPECT_FALSE(defaults.contains(QString()));
}

TEST_F(ShortcutEditorTest, anEmptyKeyIsSavedAsTheToolsDefault) {
    set("screenRecordHotkey", "");
    const auto editor = edit(Trigger::screenRecorder);
    ASSERT_EQ(editor->draftKey(), QString());
    EXPECT_FALSE(editor->conflict());
    editor->save();
    EXPECT_EQ(stored("screenRecordHotkey"), QStringLiteral("6"));
    EXPECT_EQ(editor->draftKey(), QStringLiteral("6"));
}

TEST_F(ShortcutEditorTest, aConflictKeepsSavingFromDoingAnything) {
    const auto editor = edit(Trigger::emojiPicker);
    editor->setDraftKey(QStringLiteral("3"));
    editor->save();
    EXPECT_EQ(editor->saveState(), HotkeySaveState::idle);
    EXPECT_EQ(stored("emojiHotkeyKey"), QString());
    EXPECT_EQ(registrations, 0);
}

TEST_F(ShortcutEditorTest, theSaveControlIsOnShowUntilTheCycleEnds) {
    const auto editor = edit(Trigger::emojiPicker);
    editor->setDraftKey(QStringLiteral("k"));
    editor->save();
    EXPECT_TRUE(editor->showsSaveControl());
    time.advance(899ms);
    EXPECT_EQ(editor->saveState(), HotkeySaveState::saving);
    time.advance(1ms);
    EXPECT_EQ(editor->saveState(), HotkeySaveState::saved);
    time.advance(1399ms);
    EXPECT_EQ(editor->saveState(), HotkeySaveState::saved);
    time.advance(1ms);
    EXPECT_EQ(editor->saveState(), HotkeySaveState::idle);
    EXPECT_FALSE(editor->showsSaveControl());
}

TEST_F(ShortcutEditorTest, aPageThatClosesDuringTheCycleHarmsNothing) {
    auto editor = edit(Trigger::emojiPicker);
    editor->setDraftKey(QStringLiteral("k"));
    editor->save();
    editor.reset();
    time.advance(3s);
    EXPECT_EQ(stored("emojiHotkeyKey"), QStringLiteral("K"));
}

} // namespace
} // namespace tavrine
