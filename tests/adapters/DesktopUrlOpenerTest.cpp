#include "adapters/linux/DesktopUrlOpener.h"

#include <tuple>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

std::optional<ProgramCall> call(const char *page, const char *desktop, const QStringList &installed) {
    return settingsCall(
        QUrl(QStringLiteral("x-apple.systempreferences:com.apple.preference.security?") + QLatin1String(page)),
        QLatin1String(desktop), [&](const QString &program) { return installed.contains(program); });
}

const QString gnome = QStringLiteral("gnome-control-center");
const QString xfce = QStringLiteral("xfce4-settings-manager");

TEST(DesktopUrlOpener, aSettingsAddressOpensTheMatchingPage) {
    EXPECT_EQ(call("Privacy_Microphone", "GNOME", {gnome}), (ProgramCall{gnome, {QStringLiteral("microphone")}}));
    EXPECT_EQ(call("Privacy_Accessibility", "XFCE", {xfce}),
              (ProgramCall{xfce, {QStringLiteral("--dialog=xfce4-accessibility-settings")}}));
}

TEST(DesktopUrlOpener, theAddressOfTheShortcutsOpensThePageOfTheKeysOnEachDesktop) {
    const QString kde = QStringLiteral("systemsettings");
    const QString olderKde = QStringLiteral("systemsettings5");
    for (const auto &[desktop, program, page] : {std::tuple{"GNOME", gnome, QStringLiteral("keyboard")},
                                                 {"KDE", kde, QStringLiteral("kcm_keys")},
                                                 {"KDE", olderKde, QStringLiteral("kcm_keys")},
                                                 {"XFCE", xfce, QStringLiteral("--dialog=xfce4-keyboard-settings")}})
        EXPECT_EQ(settingsCall(
                      QUrl(QStringLiteral("x-apple.systempreferences:com.apple.preference.keyboard?Shortcuts")),
                      QLatin1String(desktop), [&program = program](const QString &asked) { return asked == program; }),
                  (ProgramCall{program, {page}}));
}

TEST(DesktopUrlOpener, thePageThatAProgramDoesNotHaveOpensTheProgram) {
    EXPECT_EQ(call("Privacy_Microphone", "XFCE", {xfce}), (ProgramCall{xfce, {}}));
}

TEST(DesktopUrlOpener, theDesktopsOwnSettingsComeBeforeOthers) {
    EXPECT_EQ(call("Privacy_Microphone", "XFCE", {gnome, xfce})->program, xfce);
    EXPECT_EQ(call("Privacy_Microphone", "ubuntu:GNOME", {gnome, xfce})->program, gnome);
    EXPECT_EQ(call("Privacy_Microphone", "i3", {xfce})->program, xfce);
}

TEST(DesktopUrlOpener, withoutASettingsProgramNothingOpens) {
    EXPECT_EQ(call("Privacy_Microphone", "GNOME", {}), std::nullopt);
}

} // namespace
} // namespace tavrine
