// The table of all preferences. A key, its type and its fallback are what a person's file was written with, so each is
// written down here once more; tests/house/preference-keys sees to it that none is missing.
#include "capture/ColorPickerManager.h"
#include "capture/SnipPreferences.h"
#include "clipboard/ClipboardPreferences.h"
#include "shell/FeatureFlags.h"
#include "shell/OnboardingModel.h"
#include "shell/PanelTraits.h"
#include "shell/ShellPreferences.h"
#include "shell/Triggers.h"
#include "shell/menu/LayoutPreferences.h"
#include "shell/settings/HomeDashboardModel.h"
#include "shell/updates/UpdatePreferences.h"
#include "upload/CustomUploadManager.h"
#include "utilities/awake/KeepAwakePreferences.h"
#include "utilities/emoji/EmojiPickerStore.h"
#include "utilities/lofi/LofiManager.h"
#include "utilities/meter/SpeedPreferences.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

QString typed(const char *type, const QString &fallback) {
    return QLatin1String(type) + QLatin1Char(' ') + fallback;
}
QString shown(bool value) {
    return typed("Bool", value ? QStringLiteral("true") : QStringLiteral("false"));
}
QString shown(qint64 value) {
    return typed("Int", QString::number(value));
}
QString shown(const QString &value) {
    return typed("String", value.isEmpty() ? QStringLiteral("none") : value);
}
QString shown(const QByteArray &value) {
    return typed("Data", value.isEmpty() ? QStringLiteral("none") : QString::fromLatin1(value));
}
QString shown(Date value) {
    return typed("Date", value == Date::distantPast() ? QStringLiteral("never") : description(value));
}
QString shown(const QStringList &value) {
    return typed("[String]", value.join(QLatin1Char(' ')));
}

template <class T>
std::string row(const Preference<T> &preference) {
    QString fallback;
    if constexpr (std::is_enum_v<T>)
        fallback = shown(textOf(preference.table, preference.fallback));
    else
        fallback = shown(preference.fallbackValue());
    return QStringLiteral("%1: %2").arg(QLatin1String(preference.key), fallback).toStdString();
}

std::vector<std::string> allPreferences() {
    using namespace preference;
    std::vector<std::string> rows{row(hasCompletedOnboarding),
                                  row(showInMenuBar),
                                  row(clipboardHotkeyMode),
                                  row(emojiHotkeyMode),
                                  row(screenRecordHotkeyMode),
                                  row(hotkeyCharacter),
                                  row(emojiHotkeyKey),
                                  row(snipHotkey),
                                  row(screenRecordHotkey),
                                  row(keepAwakeShowBgIndicator),
                                  row(keepAwakeBgColor),
                                  row(showInternetSpeed),
                                  row(speedDisplayMode),
                                  row(speedTheme),
                                  row(classicFrame),
                                  row(layoutOrder),
                                  row(layoutShowScreenshot),
                                  row(layoutShowEditor),
                                  row(layoutShowQRScan),
                                  row(layoutShowSubtitles),
                                  row(discordBannerDismissed),
                                  row(updatesCheckAutomatically),
                                  row(updatesLastCheck),
                                  row(updatesToldVersion),
                                  row(snipMuteSound),
                                  row(snipUseSaveDefault),
                                  row(snipSaveDirectoryPath),
                                  row(customSaveDirectoryPath),
                                  row(colorPickerFormat),
                                  row(cloudUploadEnabled),
                                  row(retentionPeriod),
                                  row(autoClearOnRestart),
                                  row(stripRichText),
                                  row(excludedApps),
                                  row(clipboardExperience),
                                  row(searchPrimaryMigration),
                                  row(oldHistory),
                                  row(databaseMigrated),
                                  row(mySaveSeeded),
                                  row(lastLaunchDate),
                                  row(keepAwakeMode),
                                  row(keepAwakeDuration),
                                  row(keepAwakeChargingOnly),
                                  row(keepAwakeScheduleEnabled),
                                  row(keepAwakeWeekdaysOnly),
                                  row(keepAwakeScheduleStartSecs),
                                  row(keepAwakeScheduleEndSecs),
                                  row(recentEmojis),
                                  row(pinnedEmojis),
                                  row(lofiCustomTrackPath),
                                  row(lofiCustomTrackName)};
    for (const FeatureText &text : featureTexts)
        rows.push_back(row(text.preference));
    return rows;
}

TEST(Preferences, areKeptUnderTheKeysAndWithTheFallbacksOfTheTable) {
    EXPECT_THAT(
        allPreferences(),
        testing::UnorderedElementsAre(
            // The shell.
            "hasCompletedOnboarding: Bool false", "showInMenuBar: Bool true", "TavrineHistoryFrame: String none",
            "keepAwakeShowBgIndicator: Bool false", "keepAwakeBgColor: String #007AFF",
            "discordBannerDismissed: Bool false", "updatesCheckAutomatically: Bool true",
            "updatesLastCheck: Date never", "updatesToldVersion: String none",
            // The Quick Actions.
            "layoutOrder: String loFi,keepAwake,screenshot,screenRecord,qrScan,cleanMode,settings,editor",
            "layoutShowScreenshot: Bool true", "layoutShowEditor: Bool true", "layoutShowQRScan: Bool true",
            "layoutShowSubtitles: Bool true",
            // The speed meter.
            "showInternetSpeed: Bool false", "speedDisplayMode: String Download Only",
            "speedTheme: String Glass Effect",
            // The switches of the tools.
            "featureNotchShelf: Bool true", "featureSnippingTool: Bool true", "featureScreenRecorder: Bool true",
            "featureTavrineEditor: Bool true", "featureClipboardHistory: Bool true", "featureNetworkSpeed: Bool true",
            "featureKeepAwake: Bool true", "featureCleaningMode: Bool true", "featureLoFi: Bool true",
            "featureEmojiPicker: Bool true",
            // The triggers.
            "clipboardHotkeyMode: String commandShift", "emojiHotkeyMode: String commandShift",
            "screenRecordHotkeyMode: String commandShift", "HotkeyCharacter: String v", "emojiHotkeyKey: String E",
            "snipHotkey: String 2", "screenRecordHotkey: String 6",
            // The clipboard.
            "RetentionPeriod: String 30 Days", "AutoClearOnRestart: Bool false", "StripRichTextFormatting: Bool false",
            "ExcludedAppsV2: Data none", "customSaveDirectoryPath: String none", "ClipboardHistory: Data none",
            "ClipboardDBMigrated: Bool false", "ClipboardMySaveSeeded: Bool false", "LastLaunchDate: Date never",
            "ClipboardExperience: String search", "ClipboardSearchPrimaryMigrationV1: Bool false",
            // Captures, colours, uploads.
            "snipMuteSound: Bool false", "snipUseSaveDefault: Bool false", "snipSaveDirectoryPath: String none",
            "colorPickerFormat: String Hex (#RRGGBB)", "cloudUploadEnabled: Bool false",
            // Music.
            "lofiCustomTrackPath: String none", "lofiCustomTrackName: String none",
            // Keep Awake.
            "keepAwakeModeV2: String displayAwake", "keepAwakeDuration: String indefinite",
            "keepAwakeChargingOnly: Bool false", "keepAwakeScheduleEnabled: Bool false",
            "keepAwakeWeekdaysOnly: Bool true", "keepAwakeScheduleStartSecs: Int 32400",
            "keepAwakeScheduleEndSecs: Int 64800",
            // Emoji.
            "EmojiPickerRecentEmojis: [String] 🖤 🚀 😎 😆 ⌘ 😇 💬 ◦ 👊 🤝 ✅ 💰 😬 🔫 → "
            "🤷",
            "EmojiPickerPinnedEmojis: [String] ❤️ 😬 🙏 🎉"));
}

} // namespace
} // namespace tavrine
