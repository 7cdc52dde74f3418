// What is typed into a page of the settings and not saved yet.

#include "look/Button.h"
#include "look/SegmentedControl.h"
#include "shell/settings/KeyFieldView.h"
#include "shell/settings/SettingsWindowTest.h"
#include "upload/CustomUploadManager.h"
#include "upload/ScriptEditorView.h"
#include "upload/UploadScripts.h"
#include "upload/Uploads.h"

namespace tavrine {
namespace {

class SettingsDrafts : public SettingsWindowTest {
protected:
    [[nodiscard]] QString savedScript() { return delegate->shell().uploads().manager().savedScript(); }
    void typeScript(const char *script) {
        defaults.set(text("cloudUploadEnabled"), true);
        go(SidebarItem::cloudUpload);
        auto *editor = view().page()->findChild<ScriptEditorView *>();
        editor->selectAll();
        editor->insertPlainText(text(script));
    }
};

constexpr auto sound = "function uploadImage() { return 1; }";

TEST_F(SettingsDrafts, aKeyThatIsTypedIsSavedAndRegisteredAtOnce) {
    go(SidebarItem::emoji);
    auto *field = find<KeyFieldView>("Shortcut Key");
    ASSERT_TRUE(field);
    EXPECT_EQ(field->key(), text("E"));
    auto *save = find<look::Button>("Save Changes");
    ASSERT_TRUE(save);
    EXPECT_FALSE(save->isVisibleTo(view().page()));
    QTest::keyClick(field, Qt::Key_K, Qt::MetaModifier | Qt::ShiftModifier);
    EXPECT_EQ(field->key(), text("K"));
    EXPECT_TRUE(save->isVisibleTo(view().page()));
    quietly([&] { save->click(); });
    EXPECT_EQ(defaults.get<QString>(text("emojiHotkeyKey")), text("K"));
    EXPECT_EQ(label(delegate->statusMenu().entry(StatusMenuItem::emojiPicker).keyEquivalent), text("⌘⇧K"));
}

TEST_F(SettingsDrafts, aShortcutMayBeTypedAsItWillBePressed) {
    go(SidebarItem::emoji);
    auto *field = find<KeyFieldView>("Shortcut Key");
    QTest::keyClick(field, Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(field->key(), text("K"));
    QTest::keyClick(field, Qt::Key_J, Qt::ControlModifier);
    QTest::keyClick(field, Qt::Key_J, Qt::ControlModifier | Qt::ShiftModifier | Qt::AltModifier);
    EXPECT_EQ(field->key(), text("K")) << "these are other shortcuts";
}

TEST_F(SettingsDrafts, aDigitIsTakenByItsPlaceWhateverItsKeyWrites) {
    constexpr quint32 keyOfSeven = 16;
    go(SidebarItem::emoji);
    auto *field = find<KeyFieldView>("Shortcut Key");
    for (const auto &[key, written, modifiers] :
         {std::tuple{Qt::Key_Ampersand, "&", Qt::KeyboardModifiers(Qt::ShiftModifier)},
          {Qt::Key_Ampersand, "", Qt::ControlModifier | Qt::ShiftModifier},
          {Qt::Key_Egrave, "è", Qt::KeyboardModifiers()}}) {
        QTest::keyClick(field, Qt::Key_K);
        QKeyEvent event(QEvent::KeyPress, key, modifiers, keyOfSeven, 0, 0, text(written));
        QCoreApplication::sendEvent(field, &event);
        EXPECT_EQ(field->key(), text("7")) << written;
    }
}

TEST_F(SettingsDrafts, aShortcutThatIsNotSavedIsAskedForBeforeItsPageGoes) {
    const auto type = [this](Qt::Key key) {
        go(SidebarItem::emoji);
        QTest::keyClick(find<KeyFieldView>("Shortcut Key"), key);
    };
    type(Qt::Key_K);
    go(SidebarItem::home);
    EXPECT_EQ(desktop.alerts().shown().size(), 1);
    EXPECT_EQ(view().selection(), SidebarItem::home);
    EXPECT_FALSE(defaults.contains(text("emojiHotkeyKey"))) << "it was not wanted";
    type(Qt::Key_K);
    desktop.alerts().answerNextWithFirstButton();
    quietly([this] { go(SidebarItem::home); });
    EXPECT_EQ(defaults.get<QString>(text("emojiHotkeyKey")), text("K"));
    type(Qt::Key_J);
    desktop.alerts().answerNextWithFirstButton();
    quietly([this] { view().close(); });
    EXPECT_EQ(defaults.get<QString>(text("emojiHotkeyKey")), text("J"));
    EXPECT_EQ(desktop.alerts().shown().size(), 3);
    EXPECT_EQ(window(LargeWindows::Kind::settings), nullptr);
}

TEST_F(SettingsDrafts, aScriptThatIsNotSavedIsAskedForBeforeItsPageOrTheWindowGoes) {
    typeScript(sound);
    go(SidebarItem::home);
    ASSERT_EQ(desktop.alerts().shown().size(), 1);
    EXPECT_EQ(desktop.alerts().shown().back(), (Alert{text("Save the upload script?"),
                                                      text("What you changed in it is lost otherwise."),
                                                      {text("Save Changes"), text("Don't Save")}}));
    EXPECT_EQ(view().selection(), SidebarItem::home);
    EXPECT_EQ(savedScript(), QString()) << "it was not wanted";
    typeScript(sound);
    desktop.alerts().answerNextWithFirstButton();
    view().close();
    EXPECT_EQ(savedScript(), text(sound));
    EXPECT_EQ(window(LargeWindows::Kind::settings), nullptr);
}

TEST_F(SettingsDrafts, aScriptThatShallBeSavedAndCannotKeepsItsPageAndTheWindow) {
    typeScript("function uploadImage( {");
    desktop.alerts().answerNextWithFirstButton();
    go(SidebarItem::home);
    EXPECT_EQ(view().selection(), SidebarItem::cloudUpload);
    desktop.alerts().answerNextWithFirstButton();
    view().close();
    ASSERT_TRUE(window(LargeWindows::Kind::settings));
    EXPECT_TRUE(view().isVisible());
    EXPECT_EQ(view().page()->findChild<ScriptEditorView *>()->script(), text("function uploadImage( {"));
    EXPECT_EQ(savedScript(), QString());
    view().close();
    EXPECT_EQ(desktop.alerts().shown().size(), 3);
    EXPECT_EQ(window(LargeWindows::Kind::settings), nullptr);
}

TEST_F(SettingsDrafts, aScriptThatIsAsItIsStoredGoesWithoutAQuestion) {
    typeScript(sound);
    find<look::Button>("Save")->click();
    go(SidebarItem::home);
    typeScript(sound);
    view().close();
    EXPECT_TRUE(desktop.alerts().shown().isEmpty());
}

TEST_F(SettingsDrafts, anEmptyScriptOrTheDefaultOneIsNoDraft) {
    typeScript(" \n");
    go(SidebarItem::home);
    typeScript(defaultUploadScript().toUtf8().constData());
    view().close();
    EXPECT_TRUE(desktop.alerts().shown().isEmpty());
}

TEST_F(SettingsDrafts, aPageWithoutADraftGoesWithoutAQuestion) {
    for (const SidebarItem item : SidebarView::order())
        go(item);
    go(SidebarItem::emoji);
    QTest::keyClick(find<KeyFieldView>("Shortcut Key"), Qt::Key_V); // the clipboard's, which cannot be saved
    view().close();
    EXPECT_TRUE(desktop.alerts().shown().isEmpty());
}

TEST_F(SettingsDrafts, aKeyOfAnotherToolCannotBeSaved) {
    go(SidebarItem::emoji);
    auto *field = find<KeyFieldView>("Shortcut Key");
    QTest::keyClick(field, Qt::Key_V);
    EXPECT_FALSE(find<look::Button>("Save Changes")->isVisibleTo(view().page()));
}

TEST_F(SettingsDrafts, theDoubleTapIsChosenBesideTheKey) {
    go(SidebarItem::emoji);
    auto *type = view().page()->findChild<look::SegmentedControl *>();
    ASSERT_TRUE(type);
    Q_EMIT type->chosen(1);
    EXPECT_FALSE(find<KeyFieldView>("Shortcut Key")->isVisibleTo(view().page()));
    quietly([&] { find<look::Button>("Save Changes")->click(); });
    EXPECT_EQ(defaults.get<QString>(text("emojiHotkeyMode")), text("doubleOption"));
}

} // namespace
} // namespace tavrine
