#include "shell/PanelController.h"

#include "base/NotificationCenter.h"
#include "base/Program.h"
#include "base/Time.h"
#include "base/VirtualKeys.h"
#include "panels/Placement.h"
#include "ports/ApplicationActivator.h"
#include "shelf/NotchGeometry.h"
#include "shell/FeatureFlags.h"
#include "shell/PanelTraits.h"
#include "shell/PasteBack.h"

#include <QPointer>

#include <algorithm>

namespace tavrine {
namespace {

/// In the middle of the main screen, and somewhat above it. On a screen too low for that it must go elsewhere, and then
/// not under the shelf's band, which lies over all windows and would hide what stands on top: the field.
FloatingPanel::Placement centred(double offset, const UserDefaults &defaults) {
    return [offset, &defaults](const Screens &screens, QSizeF size) -> std::optional<QRectF> {
        const auto screen = screens.mainScreen();
        if (!screen)
            return std::nullopt;
        const QRectF frame = centredIn(screen->visibleFrame, size, offset);
        QRectF free = usableFrame(*screen);
        if (free.contains(frame) || !textOf(Feature::notchShelf).preference.get(defaults))
            return frame;
        const double bandsBottom = minY(restingFrame(screen->frame));
        free.setHeight(std::min(maxY(free), bandsBottom) - minY(free));
        return movedInto(free, frame);
    };
}

} // namespace

PanelController::PanelController(const Ports &ports, Contents contents, Actions actions, QObject *parent)
    : QObject(parent), m_ports(ports), m_contents(std::move(contents)), m_actions(std::move(actions)),
      m_classic({ports.windows, ports.screens, ports.time},
                traitsOf(
                    classicPanelTraits, [this](const Screens &, QSizeF size) { return classicFrame(size); },
                    FloatingPanel::Placed::once)),
      m_search({ports.windows, ports.screens, ports.time},
               traitsOf(searchPanelTraits, centred(searchPanelTraits.offset, ports.defaults),
                        FloatingPanel::Placed::atEachShowing)),
      m_emoji({ports.windows, ports.screens, ports.time},
              traitsOf(emojiPanelTraits, centred(emojiPanelTraits.offset, ports.defaults),
                       FloatingPanel::Placed::atEachShowing)),
      m_departure({ports.workspace, ports.windows, ports.time}) {
    m_classic.setOnMoved([this] { saveClassicFrame(); });
    m_classic.setOnClosed([this] { dismissClassicPanel(); });
    m_search.setOnClosed([this] { dismissSearchPanel(); });
    m_emoji.setOnClosed([this] { dismissEmojiPanel(); });
    connect(&m_departure, &Departure::left, this, &PanelController::leave);
}

PanelController::~PanelController() = default;

FloatingPanel::Traits PanelController::traitsOf(const PanelTraits &traits, Placement placement,
                                                FloatingPanel::Placed placed) const {
    const bool shrinks = traits.shrinksTo < 1;
    return {.description = {.title = QString(traits.title),
                            .contentSize = QSizeF(traits.width, traits.height),
                            .isMovableByBackground = traits.isMovableByBackground},
            .placement = std::move(placement),
            .placed = placed,
            .motion = {.fadeIn = traits.fadeIn,
                       .fadeOut = traits.dismissal,
                       .timingOut = shrinks ? look::easeIn : look::easeInOut,
                       .shrinksTo = traits.shrinksTo}};
}

void PanelController::toggleClipboardPanel() {
    afterPastes([this] {
        if (m_ports.windows.isAsking())
            return; // a panel that came or went would leave the question alone
        if (m_actions.opensSearchPanel())
            toggleSearchPanel();
        else
            toggleClassicPanel();
    });
}

void PanelController::toggleEmojiPanel() {
    afterPastes([this] {
        if (!m_ports.windows.isAsking())
            showOrDismissEmojiPanel();
    });
}

/// A person may be faster than the program that is pasted into: the panel comes behind the keystroke, which is typed
/// where it belongs.
void PanelController::afterPastes(std::function<void()> toggle) {
    m_ports.time.async(this, [this, toggle = std::move(toggle)] { m_ports.pasteBack.afterPastes(this, toggle); });
}

void PanelController::ensureClassicPanel() {
    if (!m_classic.isBuilt())
        m_classic.build(m_contents.classic());
}

void PanelController::ensureSearchPanel() {
    if (!m_search.isBuilt())
        m_search.build(m_contents.search());
}

void PanelController::ensureEmojiPanel() {
    if (!m_emoji.isBuilt())
        m_emoji.build(m_contents.emoji());
}

void PanelController::toggleClassicPanel() {
    ensureClassicPanel();
    if (m_classic.isVisible()) {
        dismissClassicPanel();
        return;
    }
    show(m_classic, classicPanelTraits);
}

void PanelController::toggleSearchPanel() {
    ensureSearchPanel();
    if (m_search.isVisible()) {
        dismissSearchPanel();
        return;
    }
    m_classic.dismiss(Dismissal::atOnce);
    m_emoji.dismiss(Dismissal::atOnce);
    show(m_search, searchPanelTraits);
}

void PanelController::showOrDismissEmojiPanel() {
    ensureEmojiPanel();
    if (m_emoji.isVisible()) {
        dismissEmojiPanel();
        return;
    }
    m_classic.dismiss(Dismissal::atOnce);
    m_search.dismiss(Dismissal::atOnce);
    show(m_emoji, emojiPanelTraits);
}

void PanelController::show(FloatingPanel &panel, const PanelTraits &traits) {
    m_ports.pasteBack.noteFrontmost();
    m_ports.activator.activateIgnoringOtherApps();
    panel.show();
    m_departure.panelShown();
    removePanelMonitors();
    installPanelMonitors();
    m_ports.center.post(QString(traits.openedNotification));
}

void PanelController::dismissClassicPanel() {
    if (!m_classic.isVisible())
        return;
    removePanelMonitors();
    m_classic.dismiss(Dismissal::animated);
}

void PanelController::dismissSearchPanel() {
    if (!m_search.isVisible())
        return;
    removePanelMonitors();
    m_search.dismiss(Dismissal::animated);
}

void PanelController::dismissEmojiPanel() {
    if (!m_emoji.isVisible())
        return;
    removePanelMonitors();
    m_emoji.dismiss(Dismissal::animated);
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

void PanelController::clickedElsewhere() {
    if (m_ports.windows.isAsking())
        return;
    const QPointF pointer = m_ports.screens.mouseLocation();
    if (m_search.isVisibleAndWithout(pointer))
        dismissSearchPanel();
    else if (m_emoji.isVisibleAndWithout(pointer))
        dismissEmojiPanel();
    else if (m_classic.isVisibleAndWithout(pointer))
        dismissClassicPanel();
}

void PanelController::leave() {
    dismissSearchPanel();
    dismissEmojiPanel();
    dismissClassicPanel();
}

void PanelController::escapePressed() {
    if (m_ports.windows.isAsking())
        return;
    if (m_search.isVisible())
        dismissSearchPanel();
    else if (m_emoji.isVisible())
        dismissEmojiPanel();
    else
        dismissClassicPanel();
}

void PanelController::unloadClipboardPanels() {
    removePanelMonitors();
    m_classic.release(Dismissal::atOnce);
    m_search.release(Dismissal::atOnce);
}

void PanelController::unloadEmojiPanel() {
    m_emoji.release(Dismissal::atOnce);
}

void PanelController::orderOutClipboardPanels() {
    m_classic.dismiss(Dismissal::atOnce);
    m_search.dismiss(Dismissal::atOnce);
    removePanelMonitors();
}

void PanelController::orderOutAllPanels() {
    orderOutClipboardPanels();
    m_emoji.dismiss(Dismissal::atOnce);
}

} // namespace tavrine
