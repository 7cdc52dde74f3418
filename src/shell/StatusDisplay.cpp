#include "shell/StatusDisplay.h"

#include "base/UserDefaults.h"
#include "ports/StatusItem.h"
#include "shell/ShellPreferences.h"
#include "shell/StatusIcon.h"

namespace tavrine {

void StatusDisplay::setUp() {
    m_item.setVisible(preference::showInMenuBar.get(m_defaults));
    updateStatusItem();
}

void StatusDisplay::setVisible(bool isVisible) {
    m_item.setVisible(isVisible);
}

void StatusDisplay::setKeepAwake(const KeepAwakeState &state) {
    m_keepAwake = state;
    m_item.setToolTip(state.isAwake ? QStringLiteral("Tavrine — Keep Awake: ") + state.modeName
                                    : QStringLiteral("Tavrine"));
    updateStatusItem();
}

void StatusDisplay::updateStatusItem() {
    m_item.setImage(statusIcon(m_keepAwake.isAwake, m_defaults));
}

} // namespace tavrine
