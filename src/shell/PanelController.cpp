#include "shell/PanelController.h"

#include "base/NotificationCenter.h"
#include "base/Program.h"
#include "base/Time.h"
#include "base/UserDefaults.h"
#include "base/VirtualKeys.h"
#include "ports/ApplicationActivator.h"
#include "ports/PanelWindow.h"
#include "ports/Screens.h"
#include "shell/PanelTraits.h"

#include <QCoreApplication>
#include <QPointer>

namespace tavrine {

PanelController::PanelController(const Ports &ports, Contents contents, Actions actions, QObject *parent)
    : QObject(parent), m_ports(ports), m_contents(std::move(contents)), m_actions(std::move(actions)),
      m_animator(ports.windows, ports.time) {
    m_deactivations = m_ports.workspace.notificationCenter().addObserver(
        QLatin1String(Workspace::didDeactivateApplicationNotification), [this](const Notification &notification) {
            const QVariant application = notification.userInfo.value(QLatin1String(Workspace::applicationKey));
            if (application.canConvert<RunningApplication>())
                appDidDeactivate(application.value<RunningApplication>());
        });
}

PanelController::~PanelController() = default;

void PanelController::toggleClipboardPanel() {
    m_ports.time.async(this, [this] {
        if (m_actions.opensSearchPanel())
            toggleSearchPanel();
        else
            toggleClassicPanel();
    });
}

void PanelController::toggleEmojiPanel() {
    m_ports.time.async(this, [this] { showOrDismissEmojiPanel(); });
}

void PanelController::make(Panel &panel, const PanelTraits &traits, const std::function<QWidget *()> &content) {
    panel = m_ports.windows.makePanel({.title = QString(traits.title),
                                       .contentSize = QSizeF(traits.width, traits.height),
                                       .isMovableByBackground = traits.isMovableByBackground});
    panel->setContentView(content());
}

void PanelController::ensureClassicPanel() {
    if (m_classic)
        return;
    make(m_classic, classicPanelTraits, m_contents.classic);
    placeClassicPanel();
    m_classic->setOnMoved([this] { saveClassicFrame(); });
    m_classic->orderOut();
}

void PanelController::ensureSearchPanel() {
    if (m_search)
        return;
    make(m_search, searchPanelTraits, m_contents.search);
    m_search->orderOut();
}

void PanelController::ensureEmojiPanel() {
    if (m_emoji)
        return;
    make(m_emoji, emojiPanelTraits, m_contents.emoji);
    m_emoji->orderOut();
}

void PanelController::toggleClassicPanel() {
    ensureClassicPanel();
    if (m_classic->isVisible()) {
        dismissClassicPanel();
        return;
    }
    ++m_classicGeneration;
    restoreClassicFrame();
    show(*m_classic, classicPanelTraits);
}

void PanelController::toggleSearchPanel() {
    ensureSearchPanel();
    if (m_search->isVisible()) {
        dismissSearchPanel();
        return;
    }
    orderOut(m_classic.get());
    orderOut(m_emoji.get());
    center(*m_search, searchPanelTraits.offset);
    show(*m_search, searchPanelTraits);
}

void PanelController::showOrDismissEmojiPanel() {
    ensureEmojiPanel();
    if (m_emoji->isVisible()) {
        dismissEmojiPanel();
        return;
    }
    ++m_emojiGeneration;
    orderOut(m_classic.get());
    orderOut(m_search.get());
    center(*m_emoji, emojiPanelTraits.offset);
    show(*m_emoji, emojiPanelTraits);
}

void PanelController::show(PanelWindow &panel, const PanelTraits &traits) {
    // The notice that follows says the same, but without a window manager it may come late.
    if (const auto front = m_ports.workspace.frontmostApplication())
        appDidDeactivate(*front);
    m_ports.activator.activateIgnoringOtherApps();
    m_animator.stop(panel);
    panel.setAlpha(0.0);
    panel.makeKeyAndOrderFront();
    m_animator.run(panel, traits.fadeIn, TimingFunction::easeInEaseOut, {.alpha = 1.0, .frame = {}});
    removePanelMonitors();
    installPanelMonitors();
    m_ports.center.post(QString(traits.openedNotification));
}

void PanelController::dismissClassicPanel() {
    if (!m_classic || !m_classic->isVisible())
        return;
    removePanelMonitors();
    if (!m_restingFrame)
        m_restingFrame = m_classic->frame(); // a second dismissal meets the panel already shrunk
    const QPointF middle = m_restingFrame->center();
    QRectF shrunk(QPointF(), m_restingFrame->size() * dismissedPart);
    shrunk.moveCenter(middle);
    m_animator.run(*m_classic, classicDismissal, TimingFunction::easeIn, {.alpha = 0.0, .frame = shrunk},
                   [this, generation = m_classicGeneration] {
                       if (!m_classic || generation != m_classicGeneration)
                           return;
                       m_animator.stop(*m_classic); // that of a second dismissal
                       m_classic->orderOut();
                       restoreClassicFrame();
                       m_classic->setAlpha(1.0);
                   });
}

void PanelController::dismissSearchPanel() {
    if (!m_search || !m_search->isVisible())
        return;
    removePanelMonitors();
    m_search->orderOut();
}

void PanelController::dismissEmojiPanel() {
    if (!m_emoji || !m_emoji->isVisible())
        return;
    removePanelMonitors();
    m_animator.run(*m_emoji, emojiDismissal, TimingFunction::easeInEaseOut, {.alpha = 0.0, .frame = {}},
                   [this, generation = m_emojiGeneration] {
                       if (!m_emoji || generation != m_emojiGeneration)
                           return;
                       m_animator.stop(*m_emoji);
                       m_emoji->orderOut();
                       m_emoji->setAlpha(1.0);
                   });
}

void PanelController::orderOut(PanelWindow *panel) {
    if (panel)
        panel->orderOut();
}

void PanelController::removePanelMonitors() {
    m_clickMonitor.reset();
    m_keyMonitor.reset();
}

void PanelController::installPanelMonitors() {
    const QPointer<PanelController> self(this);
    m_clickMonitor = m_ports.monitors.addGlobalMonitor(eventMask::leftMouseDown | eventMask::rightMouseDown,
                                                       [self](const InputEvent &) {
                                                           if (self)
                                                               self->clickedElsewhere();
                                                       });
    m_keyMonitor = m_ports.monitors.addGlobalMonitor(eventMask::keyDown, [self](const InputEvent &event) {
        if (self && event.keyCode == virtualKey::escape)
            self->escapePressed();
    });
}

bool PanelController::isVisibleAndWithout(const Panel &panel, QPointF point) const {
    return panel && panel->isVisible() && !panel->frame().contains(point);
}

void PanelController::clickedElsewhere() {
    const QPointF pointer = m_ports.screens.mouseLocation();
    if (isVisibleAndWithout(m_search, pointer))
        dismissSearchPanel();
    else if (isVisibleAndWithout(m_emoji, pointer))
        dismissEmojiPanel();
    else if (isVisibleAndWithout(m_classic, pointer))
        dismissClassicPanel();
}

void PanelController::escapePressed() {
    if (m_search && m_search->isVisible())
        dismissSearchPanel();
    else if (m_emoji && m_emoji->isVisible())
        dismissEmojiPanel();
    else
        dismissClassicPanel();
}

void PanelController::unload(Panel &panel) {
    if (!panel)
        return;
    m_animator.stop(*panel);
    panel->orderOut();
    panel->setContentView(nullptr);
    panel.reset();
}

void PanelController::unloadClipboardPanels() {
    removePanelMonitors();
    ++m_classicGeneration;
    m_restingFrame.reset();
    unload(m_classic);
    unload(m_search);
}

void PanelController::unloadEmojiPanel() {
    ++m_emojiGeneration;
    unload(m_emoji);
}

void PanelController::orderOutClipboardPanels() {
    orderOut(m_classic.get());
    orderOut(m_search.get());
    removePanelMonitors();
}

void PanelController::orderOutAllPanels() {
    removePanelMonitors();
    orderOut(m_classic.get());
    if (m_classic)
        m_classic->setAlpha(1.0);
    orderOut(m_search.get());
    orderOut(m_emoji.get());
}

void PanelController::appDidDeactivate(const RunningApplication &application) {
    const bool isOurs = application.processIdentifier == QCoreApplication::applicationPid() ||
                        application.bundleIdentifier == ownBundleIdentifier;
    if (!isOurs)
        m_previouslyActive = application;
}

} // namespace tavrine
