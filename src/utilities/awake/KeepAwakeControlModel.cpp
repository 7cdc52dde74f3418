#include "utilities/awake/KeepAwakeControlModel.h"

#include "ports/Alerts.h"

#include <QPointer>

namespace tavrine {

KeepAwakeControlModel::KeepAwakeControlModel(Parts parts) : m_parts(std::move(parts)) {
    KeepAwakeManager &manager = m_parts.manager;
    connect(&manager, &KeepAwakeManager::changed, this, &KeepAwakeControlModel::changed);
    connect(&manager, &KeepAwakeManager::showLidClosedNoPowerWarningChanged, this, [this](bool isWanted) {
        if (isWanted && m_isOnScreen)
            alertSoon();
    });
}

QString KeepAwakeControlModel::status() const {
    return manager().isAwake() ? QStringLiteral("Active") : QStringLiteral("Inactive");
}

void KeepAwakeControlModel::toggleAdvancedPanel() {
    manager().setShowAdvancedPanel(!manager().showAdvancedPanel());
}

void KeepAwakeControlModel::setOnScreen(bool isOnScreen) {
    if (std::exchange(m_isOnScreen, isOnScreen) == isOnScreen || !isOnScreen ||
        !manager().showLidClosedNoPowerWarning())
        return;
    if (manager().isPluggedIn())
        manager().setShowLidClosedNoPowerWarning(false);
    else
        alertSoon();
}

/// In a turn of its own: the call that brought it about is under way, and the question has a loop of its own.
void KeepAwakeControlModel::alertSoon() {
    m_parts.time.async(this, [this] { alert(); });
}

void KeepAwakeControlModel::alert() {
    if (!manager().beginWarning())
        return; // not wanted any more, or asked by other controls that are on the screen too
    if (m_parts.beforeAlert)
        m_parts.beforeAlert();
    const QPointer<KeepAwakeManager> manager(&m_parts.manager);
    m_parts.alerts.runModal({.message = QLatin1String(alertTitle),
                             .information = QLatin1String(alertText),
                             .buttons = {QStringLiteral("OK")}});
    if (manager)
        manager->endWarning();
}

} // namespace tavrine
