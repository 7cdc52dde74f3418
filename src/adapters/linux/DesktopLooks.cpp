#include "adapters/linux/DesktopLooks.h"

#include "adapters/linux/PortalAppearance.h"
#include "adapters/linux/SessionBus.h"

#include <QStringList>

namespace tavrine {

DesktopLooks::DesktopLooks(std::vector<std::unique_ptr<Appearance>> toolkits) : m_toolkits(std::move(toolkits)) {
    for (const auto &each : m_toolkits)
        each->setOnChange([this] { tellChange(); });
    m_told = settings();
    sessionBus::follow(this, [this](const QDBusConnection &bus) {
        m_portal.reset();
        if (bus.isConnected()) {
            m_portal = std::make_unique<PortalAppearance>(bus);
            m_portal->setOnChange([this] { tellChange(); });
        }
        tellChange();
    });
}

DesktopLooks::~DesktopLooks() = default;

DesktopAppearance DesktopLooks::settings() const {
    DesktopAppearance settings;
    bool areColoursSaid = false;
    const auto hear = [&](const DesktopAppearance &said, bool isLastWord) {
        if (!areColoursSaid) {
            settings.colorScheme = said.colorScheme;
            settings.accent = said.accent;
        }
        areColoursSaid = areColoursSaid || isLastWord || said.colorScheme != ColorScheme::noPreference || said.accent;
        settings.reducesMotion = settings.reducesMotion || said.reducesMotion;
    };
    if (m_portal && m_portal->hasAnswered())
        hear(m_portal->settings(), true);
    for (const auto &each : m_toolkits)
        hear(each->settings(), false);
    return settings;
}

void DesktopLooks::tellChange() {
    if (std::exchange(m_told, settings()) != settings() && m_onChange)
        m_onChange();
}

bool isDarkTheme(const QString &name) {
    QString parts = name.toLower();
    for (QChar &sign : parts)
        if (!sign.isLetterOrNumber())
            sign = u' ';
    return parts.split(u' ').contains(QLatin1String("dark"));
}

} // namespace tavrine
