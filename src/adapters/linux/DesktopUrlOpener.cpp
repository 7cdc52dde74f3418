#include "adapters/linux/DesktopUrlOpener.h"

#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <array>

namespace tavrine {
namespace {

constexpr QLatin1String settingsScheme("x-apple.systempreferences");

/// A settings program and what it calls its pages; an empty page is one that it does not have.
struct SettingsProgram {
    QLatin1String desktop; ///< a part of XDG_CURRENT_DESKTOP
    QLatin1String program;
    QLatin1String pagePrefix;
    QLatin1String accessibility;
    QLatin1String screenCapture;
    QLatin1String microphone;
    QLatin1String shortcuts;
};
constexpr std::array settingsPrograms{
    SettingsProgram{QLatin1String("GNOME"), QLatin1String("gnome-control-center"), QLatin1String(),
                    QLatin1String("universal-access"), QLatin1String("applications"), QLatin1String("microphone"),
                    QLatin1String("keyboard")},
    SettingsProgram{QLatin1String("KDE"), QLatin1String("systemsettings"), QLatin1String(), QLatin1String("kcm_access"),
                    QLatin1String(), QLatin1String("kcm_pulseaudio"), QLatin1String("kcm_keys")},
    SettingsProgram{QLatin1String("KDE"), QLatin1String("systemsettings5"), QLatin1String(),
                    QLatin1String("kcm_access"), QLatin1String(), QLatin1String("kcm_pulseaudio"),
                    QLatin1String("kcm_keys")},
    SettingsProgram{QLatin1String("XFCE"), QLatin1String("xfce4-settings-manager"), QLatin1String("--dialog="),
                    QLatin1String("xfce4-accessibility-settings"), QLatin1String(), QLatin1String(),
                    QLatin1String("xfce4-keyboard-settings")},
};

QLatin1String pageOf(const SettingsProgram &program, const QString &query) {
    if (query == QLatin1String("Privacy_Accessibility"))
        return program.accessibility;
    if (query == QLatin1String("Privacy_ScreenCapture"))
        return program.screenCapture;
    if (query == QLatin1String("Privacy_Microphone"))
        return program.microphone;
    if (query == QLatin1String("Shortcuts"))
        return program.shortcuts;
    return {};
}

} // namespace

std::optional<ProgramCall> settingsCall(const QUrl &url, const QString &desktop,
                                        const std::function<bool(const QString &)> &isInstalled) {
    const SettingsProgram *found = nullptr;
    for (const SettingsProgram &program : settingsPrograms) {
        if (!isInstalled(program.program))
            continue;
        if (desktop.split(QLatin1Char(':')).contains(program.desktop, Qt::CaseInsensitive)) {
            found = &program;
            break;
        }
        if (!found)
            found = &program;
    }
    if (!found)
        return std::nullopt;
    const QLatin1String page = pageOf(*found, url.query());
    return ProgramCall{found->program, page.isEmpty() ? QStringList() : QStringList{found->pagePrefix + page}};
}

void DesktopUrlOpener::openUrl(const QUrl &url) {
    if (!url.isValid() || url.scheme().isEmpty())
        return;
    if (url.scheme() != settingsScheme) {
        QProcess::startDetached(QStringLiteral("xdg-open"), {url.toString(QUrl::FullyEncoded)});
        return;
    }
    const auto isInstalled = [](const QString &program) { return !QStandardPaths::findExecutable(program).isEmpty(); };
    if (const auto call = settingsCall(url, qEnvironmentVariable("XDG_CURRENT_DESKTOP"), isInstalled))
        QProcess::startDetached(call->program, call->arguments);
}

} // namespace tavrine
