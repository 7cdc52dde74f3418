#include "shell/StatusDisplay.h"

#include "base/DesktopWords.h"
#include "ports/StatusItem.h"
#include "shell/FeatureFlags.h"
#include "shell/ShellPreferences.h"
#include "shell/StatusIcon.h"
#include "utilities/meter/NetworkMonitor.h"
#include "utilities/meter/SpeedImage.h"

namespace tavrine {

void StatusDisplay::setUp() {
    m_parts.item.setVisible(preference::showInMenuBar.get(m_parts.defaults));
    showIcon();
}

void StatusDisplay::setVisible(bool isVisible) {
    m_parts.item.setVisible(isVisible);
}

void StatusDisplay::setKeepAwake(const KeepAwakeState &state) {
    m_keepAwake = state;
    m_parts.item.setToolTip(inDesktopWords(state.isAwake ? QStringLiteral("Tavrine — Keep Awake: ") + state.modeName
                                                         : QStringLiteral("Tavrine")));
    updateStatusItem();
}

bool StatusDisplay::showsSpeed() const {
    return m_parts.flags.isOn(Feature::networkSpeed) && preference::showInternetSpeed.get(m_parts.defaults);
}

void StatusDisplay::showIcon() {
    m_parts.item.setImage(statusIcon(m_keepAwake.isAwake, m_parts.defaults));
}

void StatusDisplay::updateStatusItem() {
    if (!showsSpeed())
        return showIcon();
    const UserDefaults &defaults = m_parts.defaults;
    const bool hasIndicator = preference::keepAwakeShowBgIndicator.get(defaults);
    m_parts.item.setImage(speedImage(
        {.download = m_parts.monitor.downloadSpeed(),
         .upload = m_parts.monitor.uploadSpeed(),
         .mode = preference::speedDisplayMode.get(defaults),
         .theme = preference::speedTheme.get(defaults),
         .isAwake = m_keepAwake.isAwake,
         .isConnected = m_parts.monitor.isConnected(),
         .indicator =
             hasIndicator ? std::optional(indicatorColor(preference::keepAwakeBgColor.get(defaults))) : std::nullopt}));
}

} // namespace tavrine
