#include "shell/settings/GeneralSettingsModel.h"

#include "base/UserDefaults.h"
#include "clipboard/ClipboardManager.h"
#include "ports/LoginItem.h"
#include "shell/ShellPreferences.h"

namespace tavrine {

GeneralSettingsModel::GeneralSettingsModel(Ports ports)
    : m_ports(ports), m_launchAtLogin(ports.loginItem.isEnabled()),
      m_observer(ports.center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                          [this](const Notification &) { Q_EMIT changed(); })) {}

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
    if (isVisible == showInMenuBar())
        return;
    preference::showInMenuBar.set(m_ports.defaults, isVisible);
    m_ports.center.post(QStringLiteral("updateMenuBarVisibility"), {{QStringLiteral("visible"), isVisible}});
}

} // namespace tavrine
