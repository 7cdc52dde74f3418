#include "utilities/cleaner/KeyboardCleanerManager.h"

#include "base/Time.h"
#include "ports/Alerts.h"
#include "ports/UrlOpener.h"

#include <utility>

namespace tavrine {

void KeyboardCleanerManager::startCleaning() {
    if (m_eventTap)
        return;
    m_eventTap = m_ports.eventTaps.create([this] { onChange(); });
    if (!m_eventTap)
        m_ports.time.async(this, [this] { askForPermission(); });
    else
        onChange();
}

void KeyboardCleanerManager::stopCleaning() {
    m_eventTap.reset();
    setCleaning(false);
}

void KeyboardCleanerManager::onChange() {
    switch (m_eventTap->state()) {
    case EventTap::State::waiting:
        break;
    case EventTap::State::dropping:
        setCleaning(true);
        break;
    case EventTap::State::gaveWay:
        stopCleaning();
        break;
    case EventTap::State::ended: {
        const bool wasCleaning = m_isCleaning;
        stopCleaning();
        if (!wasCleaning)
            m_ports.time.async(this, [this] { askForPermission(); });
        break;
    }
    }
}

void KeyboardCleanerManager::setCleaning(bool isCleaning) {
    m_isCleaning = isCleaning;
    Q_EMIT isCleaningPublished(isCleaning);
}

void KeyboardCleanerManager::askForPermission() {
    if (!m_ports.eventTaps.areThere()) { // nothing that the person could allow
        m_ports.alerts.runModal({QStringLiteral("Clean Mode Is Not Available"),
                                 QStringLiteral("This desktop lets no program keep keys from other programs, so the "
                                                "keyboard cannot be blocked here."),
                                 {QStringLiteral("OK")}});
        return;
    }
    const Alert alert{QStringLiteral("Accessibility Permission Required"),
                      QStringLiteral("Clean Mode requires Accessibility permission to block keyboard input.\n\nGo to "
                                     "System Settings → Privacy & Security → Accessibility and enable Tavrine."),
                      {QStringLiteral("Open Settings"), QStringLiteral("Cancel")}};
    if (m_ports.alerts.runModal(alert))
        m_ports.urlOpener.openUrl(
            QUrl(QStringLiteral("x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility")));
}

} // namespace tavrine
