#include "shell/settings/GeneralSettingsModel.h"

#include "base/UserDefaults.h"
#include "clipboard/ClipboardManager.h"
#include "ports/LoginItem.h"
#include "shell/ShellPreferences.h"

#include <utility>

namespace tavrine {

GeneralSettingsModel::GeneralSettingsModel(Ports ports)
    : m_ports(ports), m_launchAtLogin(ports.loginItem.isEnabled()),
      m_toldVisible(preference::showInMenuBar.get(ports.defaults)),
      m_observer(ports.center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                          [this](const Notification &) { preferencesChanged(); })) {}

void GeneralSettingsModel::setLaunchAtLogin(bool isOn) {
    if (isOn == m_launchAtLogin)
        return;
    const bool isDone = isOn ? m_ports.loginItem.registerItem() : m_ports.loginItem.unregisterItem();
    m_launchAtLogin = isDone ? isOn : m_ports.loginItem.isEnabled();
    m_ports.clipboardManager.setLaunchAtLogin(m_launchAtLogin);
    Q_EMIT changed();
}

bool GeneralSettingsModel::showInMenuBar() const {
    return preference::showInMenuBar.get(m_ports.defaults);
}

void GeneralSettingsModel::setShowInMenuBar(bool isVisible) {
    if (isVisible != showInMenuBar())
        preference::showInMenuBar.set(m_ports.defaults, isVisible);
}

/// Another program may have written the preference: what the switch shows and what the tray shows are the same.
void GeneralSettingsModel::preferencesChanged() {
    Q_EMIT changed();
    const bool isVisible = showInMenuBar();
    if (std::exchange(m_toldVisible, isVisible) != isVisible)
        m_ports.center.post(QStringLiteral("updateMenuBarVisibility"), {{QStringLiteral("visible"), isVisible}});
}

} // namespace tavrine
