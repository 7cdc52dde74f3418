#include "panels/Departure.h"

#include "base/NotificationCenter.h"
#include "base/Time.h"
#include "ports/PanelWindow.h"
#include "ports/Workspace.h"

namespace tavrine {
namespace {

constexpr Seconds keyboardSettles{0.1}; ///< a window manager takes it from one window before it gives it to another
constexpr Seconds openingSettles{0.6};  ///< a panel asks again for the keyboard until then

} // namespace

Departure::Departure(const Ports &ports) : m_ports(ports) {
    m_deactivations = m_ports.workspace.notificationCenter().addObserver(
        QLatin1String(Workspace::didDeactivateApplicationNotification), [this](const Notification &notification) {
            const QVariant application = notification.userInfo.value(QLatin1String(Workspace::applicationKey));
            if (application.canConvert<RunningApplication>() && isThisProgram(application.value<RunningApplication>()))
                askAfter(keyboardSettles);
        });
}

Departure::~Departure() = default;

void Departure::panelShown() {
    m_lastShowing = m_ports.time.systemUptime();
}

void Departure::askAfter(Seconds delay) {
    m_ports.time.asyncAfter(delay, this, [this] {
        const Seconds shown = m_ports.time.systemUptime() - m_lastShowing;
        if (shown < openingSettles) {
            askAfter(openingSettles - shown);
            return;
        }
        const auto front = m_ports.workspace.frontmostApplication();
        if (front && !isThisProgram(*front) && !m_ports.windows.isAsking())
            Q_EMIT left();
    });
}

} // namespace tavrine
