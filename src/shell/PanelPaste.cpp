// The act that gives the panels their use: the content arrives where the person came from.
#include "clipboard/ClipboardItem.h"
#include "ports/Pasteboard.h"
#include "shell/PanelController.h"
#include "shell/PasteBack.h"

namespace tavrine {
namespace {

constexpr auto toastIcon = "exclamationmark.triangle.fill";

} // namespace

void PanelController::pasteFromClassic(const ClipboardItem &item) {
    m_actions.copyToPasteboard(item);
    const bool isTrusted = m_actions.isAccessibilityTrusted();
    m_classic.dismiss(Dismissal::atOnce);
    if (!isTrusted) { // the monitors stay, and go with the next panel
        m_actions.showToast(QStringLiteral("Enable Accessibility to paste automatically"), QLatin1String(toastIcon));
        return;
    }
    removePanelMonitors();
    pasteIntoTarget();
}

void PanelController::pasteFromSearch(const ClipboardItem &item) {
    m_actions.copyToPasteboard(item);
    if (!m_actions.isAccessibilityTrusted()) {
        dismissSearchPanel();
        m_actions.showToast(QStringLiteral("Enable Accessibility to paste automatically"), QLatin1String(toastIcon));
        return;
    }
    m_search.dismiss(Dismissal::atOnce);
    removePanelMonitors();
    pasteIntoTarget();
}

void PanelController::insertEmoji(const QString &text) {
    m_ports.pasteboard.clearContents();
    m_ports.pasteboard.setString(text);
    const bool isTrusted = m_actions.isAccessibilityTrusted();
    dismissEmojiPanel();
    if (isTrusted)
        pasteIntoTarget();
    else
        m_actions.showToast(QStringLiteral("Enable Accessibility to insert automatically"), QLatin1String(toastIcon));
}

void PanelController::pasteIntoTarget() {
    m_ports.pasteBack.paste(m_ports.activator, m_ports.poster, [showToast = m_actions.showToast] {
        showToast(QStringLiteral("On the clipboard: paste it yourself"), QLatin1String(toastIcon));
    });
}

} // namespace tavrine
