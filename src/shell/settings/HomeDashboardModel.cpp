#include "shell/settings/HomeDashboardModel.h"

#include "base/Addresses.h"
#include "base/Time.h"
#include "ports/Access.h"
#include "ports/Pasteboard.h"
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

std::vector<AbilityReport> HomeDashboardModel::abilities() const {
    return m_ports.abilities.reports();
}

const HomeDashboardModel::AbilityTexts &HomeDashboardModel::textsOf(Ability ability) {
    static constexpr AbilityTexts texts[] = {
        {"doc.on.clipboard", "Clipboard History", "What any program copies is recorded"},
        {"keyboard", "Hot Keys", "Reach this program whichever one has the keyboard"},
        {"hand.point.up.left", "Double Tap", "Two taps of Alt open the tool that is set to them"},
        {"doc.on.doc", "Paste", "What you choose arrives in the program that you came from"},
        {"viewfinder.circle.fill", "Screenshots", "Captures, colours and codes from the screen"},
        {"record.circle.fill", "Screen Record", "Movies of the screen"},
        {"tray", "Shelf", "Holds what you drag to the top of the screen"},
        {"menubar.arrow.up.rectangle", "Tray Icon", "Quick Actions and the menu"},
    };
    static_assert(std::size(texts) == allAbilities.size());
    return texts[static_cast<std::size_t>(ability)];
}

QString HomeDashboardModel::textOf(AbilityState state) {
    switch (state) {
    case AbilityState::there:
        return QStringLiteral("There");
    case AbilityState::limited:
        return QStringLiteral("Limited");
    case AbilityState::missing:
        break;
    }
    return QStringLiteral("Missing");
}

void HomeDashboardModel::copyLines(const AbilityReport &report) {
    Pasteboard &pasteboard = m_ports.pasteboard();
    pasteboard.clearContents();
    pasteboard.setString(report.linesToCopy);
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
