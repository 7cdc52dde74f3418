#include "shell/settings/PrivacySettingsModel.h"

#include "base/Addresses.h"
#include "base/Time.h"
#include "clipboard/ClipboardManager.h"
#include "ports/Alerts.h"
#include "ports/UrlOpener.h"

#include <QPointer>

namespace tavrine {

PrivacySettingsModel::PrivacySettingsModel(Ports ports, QObject *parent) : QObject(parent), m_ports(std::move(ports)) {}

void PrivacySettingsModel::clearAll() {
    const QPointer self(this);
    const bool isWanted = m_ports.alerts.runModal(
        {.message = QStringLiteral("Clear All Data?"),
         .information = QStringLiteral("This permanently deletes your clipboard history and cannot be undone."),
         .buttons = {QStringLiteral("Clear All Data"), QStringLiteral("Cancel")}});
    if (!isWanted || !self)
        return;
    m_ports.clipboardManager.clearHistory([self] {
        if (self)
            self->tellCleared();
    });
}

void PrivacySettingsModel::tellCleared() {
    m_cleared = true;
    Q_EMIT changed();
    m_ports.time.asyncAfter(clearedTime, this, [this] {
        m_cleared = false;
        Q_EMIT changed();
    });
}

void PrivacySettingsModel::openPolicy() {
    m_ports.urlOpener.openUrl(addressOf(Address::privacy, m_ports.resources));
}

} // namespace tavrine
