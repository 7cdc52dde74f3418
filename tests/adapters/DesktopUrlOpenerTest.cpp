#include "adapters/linux/DesktopUrlOpener.h"

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
