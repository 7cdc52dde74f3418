#include "shell/settings/ClearAndDisable.h"

#include "base/Time.h"
#include "clipboard/ClipboardManager.h"
#include "ports/Alerts.h"
#include "shell/FeatureFlags.h"

#include <QPointer>

namespace tavrine {

ClearAndDisable::ClearAndDisable(Ports ports, QObject *parent) : QObject(parent), m_ports(ports) {}

void ClearAndDisable::ask() {
    if (m_showClipboardClearConfirm)
        return;
    m_showClipboardClearConfirm = true;
    const QPointer self(this);
    const bool isWanted = m_ports.alerts.runModal(
        {.message = QStringLiteral("Clear Clipboard Memory?"),
         .information = QStringLiteral("All saved texts and images currently stored in Tavrine will be permanently "
                                       "deleted. This cannot be undone."),
         .buttons = {QStringLiteral("Clear & Disable"), QStringLiteral("Cancel")}});
    if (!self)
        return;
    m_showClipboardClearConfirm = false;
    if (!isWanted)
        return;
    m_ports.clipboardManager.clearHistory([self] {
        if (self)
            self->tellCleared();
    });
    m_ports.flags.set(Feature::clipboardHistory, false);
}

void ClearAndDisable::tellCleared() {
    m_showMemoryCleaningOverlay = true;
    Q_EMIT changed();
    m_ports.time.asyncAfter(overlayTime, this, [this, run = ++m_run] {
        if (run != m_run)
            return; // another began meanwhile, and is told of as long as this one was
        m_showMemoryCleaningOverlay = false;
        Q_EMIT changed();
    });
}

} // namespace tavrine
