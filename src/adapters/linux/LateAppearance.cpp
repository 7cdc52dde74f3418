#include "adapters/linux/LateAppearance.h"

#include "adapters/linux/SessionBus.h"

namespace tavrine {

LateAppearance::LateAppearance() {
    sessionBus::whenOpen(this, [this](const QDBusConnection &bus) {
        if (!bus.isConnected())
            return;
        m_portal.emplace(bus);
        m_portal->setOnChange(m_onChange);
    });
}

void LateAppearance::setOnChange(std::function<void()> onChange) {
    m_onChange = std::move(onChange);
    if (m_portal)
        m_portal->setOnChange(m_onChange);
}

} // namespace tavrine
