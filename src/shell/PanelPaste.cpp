// The act that gives the panels their use: the content arrives where the person came from.
#include "base/Time.h"
#include "base/VirtualKeys.h"
#include "clipboard/ClipboardItem.h"
#include "ports/ApplicationActivator.h"
#include "ports/EventPoster.h"
#include "ports/PanelWindow.h"
#include "ports/Pasteboard.h"
#include "shell/PanelController.h"

namespace tavrine {
namespace {

constexpr int longestWait = 12; ///< rounds
constexpr Seconds waitRound{0.05};
constexpr Seconds settling{0.08};  ///< between the target's coming to the front and the keystroke
constexpr Seconds blindDelay{0.2}; ///< where nothing tells that a target is in front
constexpr auto toastIcon = "exclamationmark.triangle.fill";

} // namespace

void PanelController::pasteFromClassic(const ClipboardItem &item) {
    m_actions.copyToPasteboard(item);
    const bool isTrusted = m_actions.isAccessibilityTrusted();
    orderOut(m_classic.get());
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
    orderOut(m_search.get());
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
    if (m_previouslyActive && !m_ports.activator.isRunning(*m_previouslyActive))
        m_previouslyActive.reset();
    if (!m_previouslyActive) {
        m_ports.activator.hide();
        postPasteAfter(blindDelay);
        return;
    }
    const RunningApplication target = *m_previouslyActive;
    m_ports.activator.activate(target);
    waitForActivation(target, 0);
}

void PanelController::waitForActivation(const RunningApplication &target, int attempt) {
    const auto front = m_ports.workspace.frontmostApplication();
    if (front && isSameApplication(*front, target))
        postPasteAfter(settling);
    else if (attempt < longestWait)
        m_ports.time.asyncAfter(waitRound, this, [this, target, attempt] { waitForActivation(target, attempt + 1); });
    else
        postPasteAfter(blindDelay); // never dropped: the person sees where it went
}

void PanelController::postPasteAfter(Seconds delay) {
    m_ports.time.asyncAfter(delay, this, [this] {
        m_ports.poster.postKeyboardEvent(virtualKey::v, true, modifierFlag::command);
        m_ports.poster.postKeyboardEvent(virtualKey::v, false, modifierFlag::command);
    });
}

} // namespace tavrine
