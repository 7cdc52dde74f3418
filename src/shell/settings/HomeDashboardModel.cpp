#include "shell/settings/HomeDashboardModel.h"

#include "base/Addresses.h"
#include "base/Time.h"
#include "ports/Access.h"
#include "ports/UrlOpener.h"

namespace tavrine {

const std::array<HomeDashboardModel::PermissionRow, 2> HomeDashboardModel::permissionRows{
    PermissionRow{"hand.raised", "Accessibility", "Required for clipboard monitoring and keyboard shortcuts",
                  "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility",
                  &HomeDashboardModel::isTrusted},
    PermissionRow{"rectangle.dashed.badge.record", "Screen Recording", "Required for OCR and screenshot capture",
                  "x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture",
                  &HomeDashboardModel::screenRecordingGranted}};

HomeDashboardModel::HomeDashboardModel(Ports ports, QObject *parent) : QObject(parent), m_ports(std::move(ports)) {
    readPermissions();
}

void HomeDashboardModel::readPermissions() {
    m_isTrusted = m_ports.access.isAccessibilityTrusted();
    m_screenRecordingGranted = m_ports.access.isScreenCaptureGranted();
}

void HomeDashboardModel::allow(const PermissionRow &row) {
    m_ports.urlOpener.openUrl(QUrl(QLatin1String(row.settings)));
    m_ports.time.asyncAfter(rereadDelay, this, [this] {
        readPermissions();
        Q_EMIT changed();
    });
}

bool HomeDashboardModel::showsBanner() const {
    return !preference::discordBannerDismissed.get(m_ports.defaults);
}

void HomeDashboardModel::dismissBanner() {
    preference::discordBannerDismissed.set(m_ports.defaults, true);
    Q_EMIT changed();
}

void HomeDashboardModel::openCommunity() {
    m_ports.urlOpener.openUrl(addressOf(Address::community, m_ports.resources));
}

void HomeDashboardModel::openChangelog() {
    m_ports.urlOpener.openUrl(addressOf(Address::changelog, m_ports.resources));
}

} // namespace tavrine
