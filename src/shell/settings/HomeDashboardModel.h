#pragma once

#include "base/Date.h"
#include "base/Preference.h"
#include "ports/DesktopAbilities.h"

#include <QObject>

#include <array>
#include <functional>
#include <vector>

namespace tavrine {

class Access;
class DesktopAbilities;
class Pasteboard;
class Time;
class UrlOpener;

namespace preference {
/// The community banner was dismissed, and stays away.
inline constexpr Preference<bool> discordBannerDismissed{"discordBannerDismissed", false};
} // namespace preference

/// What the first page of the settings knows: permissions as they were when it was built, and the banner. Lives as long
/// as its page; main thread. It does not watch the permissions.
class HomeDashboardModel : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds rereadDelay{1.0};

    /// A permission that may be missing, and the settings that give it.
    struct PermissionRow {
        const char *symbol;
        const char *title;
        const char *subtitle;
        const char *settings;
        bool (HomeDashboardModel::*isGranted)() const;
    };
    static const std::array<PermissionRow, 2> permissionRows;

    struct AbilityTexts {
        const char *symbol;
        const char *title;
        const char *subtitle; ///< where nothing is wanting
    };

    /// All outlive the model.
    struct Ports {
        UserDefaults &defaults;
        Access &access;
        Time &time;
        UrlOpener &urlOpener;
        QString resources;
        DesktopAbilities &abilities;
        std::function<Pasteboard &()> pasteboard; ///< asked for when something is copied
    };
    explicit HomeDashboardModel(Ports ports, QObject *parent = nullptr);

    [[nodiscard]] bool isTrusted() const { return m_isTrusted; }
    [[nodiscard]] bool screenRecordingGranted() const { return m_screenRecordingGranted; }
    [[nodiscard]] bool needsPermissions() const { return !m_isTrusted || !m_screenRecordingGranted; }
    /// Opens the settings, and reads both permissions again a moment later: once.
    void allow(const PermissionRow &row);

    /// What this desktop allows, as it is now; the words for each.
    [[nodiscard]] std::vector<AbilityReport> abilities() const;
    [[nodiscard]] static const AbilityTexts &textsOf(Ability ability);
    [[nodiscard]] static QString textOf(AbilityState state);
    /// Puts the lines of a report on the clipboard.
    void copyLines(const AbilityReport &report);

    [[nodiscard]] bool showsBanner() const;
    void dismissBanner();
    void openCommunity();
    void openChangelog();

Q_SIGNALS:
    void changed();

private:
    void readPermissions();

    Ports m_ports;
    bool m_isTrusted = false;
    bool m_screenRecordingGranted = false;
};

} // namespace tavrine
