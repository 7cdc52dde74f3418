// Pages that are open while somebody else changes what they show, or while what they ask does not answer.

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/Toggle.h"
#include "shell/ShellTest.h"
#include "shell/settings/MainAppView.h"
#include "shell/settings/SidebarView.h"
#include "support/Eventually.h"
#include "upload/CustomUploadManager.h"
#include "upload/ScriptEditorView.h"
#include "upload/Uploads.h"

#include <QTest>

namespace tavrine {
namespace {

struct Switch {
    const char *key;
    bool fallback;
    SidebarItem page;
    const char *name; ///< of the control that shows it, if a page has one
};

constexpr Switch switches[] = {
    {"showInMenuBar", true, SidebarItem::general, "Show in Menu Bar"},
    {"layoutShowScreenshot", true, SidebarItem::layout, "Screenshot"},
    {"layoutShowEditor", true, SidebarItem::layout, "Tavrine Editor"},
    {"layoutShowQRScan", true, SidebarItem::layout, "QR Scan"},
    {"layoutShowSubtitles", true, SidebarItem::layout, "Include Subtitle"},
    {"keepAwakeShowBgIndicator", false, SidebarItem::keepAwake, "Show active indicator"},
    {"showInternetSpeed", false, SidebarItem::network, "Show Internet Speed"},
    {"snipMuteSound", false, SidebarItem::snipper, "Off shutter sound"},
    {"snipUseSaveDefault", false, SidebarItem::snipper, "Always save without asking"},
    {"cloudUploadEnabled", false, SidebarItem::cloudUpload, "Custom Upload Script"},
};

constexpr const char *otherKeys[] = {
    "hasCompletedOnboarding",
    "discordBannerDismissed",
    "clipboardHotkeyMode",
    "emojiHotkeyMode",
    "screenRecordHotkeyMode",
    "HotkeyCharacter",
    "emojiHotkeyKey",
    "snipHotkey",
    "screenRecordHotkey",
    "layoutOrder",
    "keepAwakeBgColor",
    "speedDisplayMode",
    "speedTheme",
    "snipSaveDirectoryPath",
    "customSaveDirectoryPath",
    "colorPickerFormat",
    "keepAwakeModeV2",
    "keepAwakeDuration",
    "keepAwakeChargingOnly",
    "keepAwakeWeekdaysOnly",
    "keepAwakeScheduleEnabled",
    "keepAwakeScheduleStartSecs",
    "keepAwakeScheduleEndSecs",
    "lofiCustomTrackPath",
    "lofiCustomTrackName",
};

class OpenPages : public ShellTest {
protected:
    void open() {
        launch();
        delegate->openSettings();
    }
    MainAppView &view() { return *qobject_cast<MainAppView *>(window(LargeWindows::Kind::settings)); }
    void go(SidebarItem item) {
        view().setSelection(std::nullopt);
        view().setSelection(item);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    look::Toggle *toggle(const char *name) {
        for (auto *each : view().page()->findChildren<look::Toggle *>()) {
            if (each->accessibleName() == inDesktopWords(text(name)))
                return each;
        }
        return nullptr;
    }
    look::Button *button(const char *name) {
        for (auto *each : view().page()->findChildren<look::Button *>()) {
            if (each->text() == text(name))
                return each;
        }
        return nullptr;
    }
    static std::vector<QString> everyKey() {
        std::vector<QString> keys;
        for (const Switch &each : switches)
            keys.push_back(text(each.key));
        for (const char *key : otherKeys)
            keys.push_back(text(key));
        for (const FeatureText &each : featureTexts)
            keys.push_back(text(each.preference.key));
        return keys;
    }
};

TEST_F(OpenPages, aValueOfAnotherTypeShowsAsTheDefaultAndIsNotWrittenOver) {
    open();
    const QByteArray foreign("\xff\x00\x01", 3);
    for (const SidebarItem item : SidebarView::order()) {
        for (const Switch &each : switches)
            defaults.set(text(each.key), !each.fallback);
        go(item);
        for (const QString &key : everyKey())
            defaults.set(key, foreign);
        time.advance(1s);
        for (const QString &key : everyKey())
            EXPECT_EQ(defaults.get<QByteArray>(key), foreign) << textOf(item).text << ": " << key.toStdString();
        for (const Switch &each : switches) {
            if (each.page != item)
                continue;
            ASSERT_TRUE(toggle(each.name)) << each.name;
            EXPECT_EQ(toggle(each.name)->isChecked(), each.fallback) << each.name;
        }
    }
}

TEST_F(OpenPages, whatAnotherProgramWritesIsShownOnTheOpenPageAndStands) {
    open();
    NotificationCenter otherCenter;
    for (const Switch &each : switches) {
        go(each.page);
        ASSERT_TRUE(toggle(each.name)) << each.name;
        for (const bool wanted : {!each.fallback, each.fallback}) {
            ASSERT_TRUE(defaults.synchronize());
            UserDefaults other(home.filePath(text("com.veltrane.Tavrine.plist")), time, otherCenter);
            other.set(text(each.key), wanted);
            ASSERT_TRUE(other.synchronize());
            ASSERT_TRUE(defaults.synchronize());
            time.advance(0s);
            EXPECT_EQ(toggle(each.name)->isChecked(), wanted) << each.name;
            EXPECT_EQ(defaults.get<bool>(text(each.key)), wanted) << each.name;
        }
    }
}

TEST_F(OpenPages, theTrayItemFollowsItsSwitchWhoeverMovesIt) {
    open();
    go(SidebarItem::general);
    defaults.set(text("showInMenuBar"), false);
    time.advance(0s);
    ASSERT_TRUE(toggle("Show in Menu Bar"));
    EXPECT_FALSE(toggle("Show in Menu Bar")->isChecked());
    EXPECT_FALSE(desktop.statusItem().isVisible()) << "as the page says";
    toggle("Show in Menu Bar")->click();
    time.advance(0s);
    EXPECT_TRUE(desktop.statusItem().isVisible());
}

TEST_F(OpenPages, aKeyRingThatNeverAnswersLeavesTheUploadPageInUse) {
    desktop.keychain().hold();
    defaults.set(text("cloudUploadEnabled"), true);
    open();
    go(SidebarItem::cloudUpload);
    ASSERT_TRUE(test::eventually([this] { return desktop.keychain().calls().contains(text("read")); }));
    auto *editor = view().page()->findChild<ScriptEditorView *>();
    ASSERT_TRUE(editor);
    const QString script = text("function uploadImage(imageBase64, fileName) { return 1 }");
    editor->selectAll();
    editor->insertPlainText(script);
    ASSERT_TRUE(button("Save"));
    button("Save")->click();
    EXPECT_TRUE(button("Saved"));
    EXPECT_EQ(delegate->shell().uploads().manager().savedScript(), script);
    go(SidebarItem::general);
    go(SidebarItem::cloudUpload);
    EXPECT_EQ(view().page()->findChild<ScriptEditorView *>()->script(), script) << "known without the key ring";
    toggle("Custom Upload Script")->click();
    EXPECT_EQ(defaults.get<bool>(text("cloudUploadEnabled")), false);
    view().close();
    EXPECT_EQ(window(LargeWindows::Kind::settings), nullptr);
}

} // namespace
} // namespace tavrine
