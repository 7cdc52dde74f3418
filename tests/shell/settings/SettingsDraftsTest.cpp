// What is typed into a page of the settings and not saved yet.

#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/OutcomeView.h"
#include "look/SegmentedControl.h"
#include "look/Unfolding.h"
#include "look/WrappedText.h"
#include "shell/settings/KeyFieldView.h"
#include "shell/settings/SettingsWindowTest.h"
#include "upload/CustomUploadManager.h"
#include "upload/ScriptEditorView.h"
#include "upload/UploadScripts.h"
#include "upload/Uploads.h"

#include <QGraphicsOpacityEffect>

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

/// The same where things move.
class MovingSettingsDrafts : public SettingsDrafts {
protected:
    void pass(std::chrono::milliseconds length) {
        quietly([&] { time.advance(length); });
        for (int round = 0; round < 2; ++round) // a layout that has changed asks for that of what it is in
            QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    }
    /// What holds a widget that comes and goes.
    static look::Unfolding &placeOf(QWidget *widget) {
        while (widget && !qobject_cast<look::Unfolding *>(widget))
            widget = widget->parentWidget();
        return *static_cast<look::Unfolding *>(widget);
    }
    static double opacityOf(const look::Unfolding &place) {
        const auto *inside = place.findChild<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
        const auto *effect = qobject_cast<QGraphicsOpacityEffect *>(inside->graphicsEffect());
        return effect ? effect->opacity() : place.isVisible() ? 1 : 0;
    }
    void expectHalfway(const look::Unfolding &place) {
        EXPECT_GT(place.height(), 4);
        EXPECT_LT(place.height(), 40);
        EXPECT_GT(opacityOf(place), 0.1);
        EXPECT_LT(opacityOf(place), 0.9);
    }

    look::Look look{time};
};

TEST_F(MovingSettingsDrafts, whatIsInTheWayOfAKeyComesWithAnOpacityAndAMove) {
    go(SidebarItem::emoji);
    pass(1s);
    auto *words = view().page()->findChildren<look::WrappedText *>().value(0);
    for (auto *each : view().page()->findChildren<look::WrappedText *>())
        if (each->symbol() == QLatin1String(ShortcutEditor::bannerIcon))
            words = each;
    look::Unfolding &banner = placeOf(words);
    EXPECT_FALSE(banner.isVisible());
    QTest::keyClick(find<KeyFieldView>("Shortcut Key"), Qt::Key_V);
    EXPECT_TRUE(words->text().startsWith(text("Conflicts with Clipboard History uses ")));
    pass(80ms);
    expectHalfway(banner);
    pass(1s);
    EXPECT_GT(banner.height(), 30);
    EXPECT_EQ(opacityOf(banner), 1);
}

TEST_F(MovingSettingsDrafts, theControlThatSavesComesAndGoesWithTheDefaultAnimation) {
    go(SidebarItem::emoji);
    pass(1s);
    auto *button = find<look::Button>("Save Changes");
    look::Unfolding &control = placeOf(button);
    auto *outcome = control.findChild<look::OutcomeView *>();
    EXPECT_FALSE(control.isVisible());
    QTest::keyClick(find<KeyFieldView>("Shortcut Key"), Qt::Key_K);
    pass(80ms);
    expectHalfway(control);
    pass(1s);
    EXPECT_EQ(control.height(), 48);
    quietly([&] { button->click(); });
    pass(899ms);
    EXPECT_FALSE(outcome->isVisible());
    look::Label *words = nullptr;
    for (auto *each : control.findChildren<look::Label *>())
        words = each->text() == text("Setting up…") ? each : words;
    auto *spinner = control.findChild<look::Spinner *>();
    ASSERT_TRUE(words && spinner);
    EXPECT_TRUE(words->isVisible());
    EXPECT_TRUE(spinner->isVisible());
    pass(1ms);
    EXPECT_FALSE(words->isVisible());
    EXPECT_FALSE(spinner->isVisible());
    EXPECT_EQ(outcome->accessibleName(), text("Saved"));
    const QImage first = outcome->grab().toImage();
    pass(80ms);
    const QImage halfway = outcome->grab().toImage();
    pass(1s);
    EXPECT_NE(first, halfway);
    EXPECT_NE(halfway, outcome->grab().toImage()) << "it fades in";
    pass(320ms); // 1.4 s in all
    EXPECT_EQ(control.height(), 48);
    pass(80ms);
    expectHalfway(control);
    EXPECT_EQ(outcome->accessibleName(), text("Saved")) << "it says what it said while it goes";
    pass(1s);
    EXPECT_FALSE(control.isVisible());
    QTest::keyClick(find<KeyFieldView>("Shortcut Key"), Qt::Key_J);
    EXPECT_TRUE(button->isVisible());
}

TEST_F(SettingsDrafts, theClipboardsKeyIsStoredInASmallLetter) {
    go(SidebarItem::clipboard);
    auto *field = find<KeyFieldView>("Shortcut Key");
    ASSERT_TRUE(field);
    QTest::keyClick(field, Qt::Key_K);
    EXPECT_EQ(field->key(), text("K"));
    quietly([&] { find<look::Button>("Save Changes")->click(); });
    EXPECT_EQ(defaults.get<QString>(text("HotkeyCharacter")), text("k"));
    EXPECT_EQ(label(delegate->statusMenu().entry(StatusMenuItem::clipboard).keyEquivalent), text("⌘⇧K"));
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

TEST_F(SettingsDrafts, aStoredModeThatIsNoneIsNotTakenForOneAndEachCanBeChosen) {
    defaults.set(text("emojiHotkeyMode"), text("tripleOption"));
    for (const auto &[segment, mode] : {std::pair{"Global Shortcut", "commandShift"}, {"Double Alt", "doubleOption"}}) {
        go(SidebarItem::home);
        go(SidebarItem::emoji);
        auto *type = view().page()->findChild<look::SegmentedControl *>();
        ASSERT_TRUE(type);
        EXPECT_EQ(type->current(), look::SegmentedControl::none);
        EXPECT_FALSE(find<KeyFieldView>("Shortcut Key")->isVisibleTo(view().page()));
        EXPECT_FALSE(find<look::Button>("Save Changes")->isVisibleTo(view().page()));
        auto *choice = find<QAbstractButton>(segment);
        ASSERT_TRUE(choice) << segment;
        EXPECT_FALSE(choice->isChecked());
        choice->click();
        EXPECT_TRUE(choice->isChecked());
        quietly([&] { find<look::Button>("Save Changes")->click(); });
        EXPECT_EQ(defaults.get<QString>(text("emojiHotkeyMode")), text(mode));
        quietly([&] { time.advance(3s); });
        defaults.set(text("emojiHotkeyMode"), text("tripleOption"));
    }
}

TEST_F(SettingsDrafts, theWayToTheDesktopsOwnKeysStandsBesideThoseAlone) {
    go(SidebarItem::emoji);
    auto *field = find<KeyFieldView>("Shortcut Key");
    auto *settings = find<look::Button>("Open Settings");
    ASSERT_TRUE(settings);
    for (const Qt::Key key : {Qt::Key_3, Qt::Key_4, Qt::Key_5}) {
        QTest::keyClick(field, key);
        EXPECT_TRUE(settings->isVisibleTo(view().page())) << key;
    }
    EXPECT_TRUE(desktop.urlOpener().opened().isEmpty());
    settings->click();
    EXPECT_EQ(desktop.urlOpener().opened(),
              QList<QUrl>{QUrl(text("x-apple.systempreferences:com.apple.preference.keyboard?Shortcuts"))});
    QTest::keyClick(field, Qt::Key_V); // the clipboard's
    EXPECT_FALSE(settings->isVisibleTo(view().page()));
}

} // namespace
} // namespace tavrine
