#include "shell/menu/StatusMenuPanel.h"

#include "base/Time.h"
#include "panels/Placement.h"
#include "ports/ApplicationActivator.h"
#include "ports/Screens.h"
#include "shell/menu/StatusMenuView.h"

#include <QApplication>

#include <algorithm>

namespace tavrine {
namespace {

constexpr double gap = 14; // from the pointer, which is somewhere on the item, to the menu

std::optional<Screen> screenAt(const Screens &screens, QPointF place) {
    const QList<Screen> all = screens.screens();
    const auto found =
        std::ranges::find_if(all, [place](const Screen &screen) { return screen.frame.contains(place); });
    return found == all.end() ? mainOrFirstScreen(screens) : std::optional(*found);
}

} // namespace

StatusMenuPanel::StatusMenuPanel(const Ports &ports, MakeContent makeContent, std::function<void()> willOpen,
                                 QObject *parent)
    : QObject(parent), m_ports(ports), m_makeContent(std::move(makeContent)), m_willOpen(std::move(willOpen)),
      m_height(ports.time, [this] { return m_view ? std::optional(m_view->measuredGrid()) : std::nullopt; }),
      m_panel(
          {ports.windows, ports.screens, ports.time},
          {.description = {.title = QStringLiteral("Tavrine Menu"), .contentSize = {}, .level = windowLevel::popUpMenu},
           .placement = [this](const Screens &screens, QSizeF) { return frameAt(screens); }}),
      m_departure({ports.workspace, ports.windows, ports.time}) {
    m_panel.setOnClosed([this] { cancelTracking(); });
    connect(&m_departure, &Departure::left, this, &StatusMenuPanel::cancelTracking);
}

StatusMenuPanel::~StatusMenuPanel() = default;

QPointF StatusMenuPanel::planePoint(QPoint place) const {
    return {double(place.x()), m_ports.screens.toolkitRect({}).y() - place.y()};
}

void StatusMenuPanel::press(QPoint place, Seconds ago) {
    if (isOpen()) {
        cancelTracking();
        return;
    }
    if (m_pressedElsewhereAt && m_ports.time.systemUptime() - ago - *m_pressedElsewhereAt < samePress)
        return;
    m_pressedAt = place;
    m_place = planePoint(place);
    open();
}

void StatusMenuPanel::build() {
    m_view = m_makeContent(m_height);
    connect(m_view, &StatusMenuView::closeWanted, this, &StatusMenuPanel::cancelTracking);
    connect(m_view, &StatusMenuView::sizeChanged, this, &StatusMenuPanel::resize);
    m_height.setNow();
    m_panel.build(m_view, m_view->sizeHint());
}

void StatusMenuPanel::open() {
    // A quick hand lets go while it opens, over an entry.
    const bool isHeld = m_ports.screens.pressedMouseButtons() != 0;
    m_willOpen();
    if (!m_panel.isBuilt())
        build();
    m_view->prepare(m_pressedAt);
    m_height.setNow();
    m_ports.activator.activateIgnoringOtherApps();
    m_panel.show();
    m_departure.panelShown();
    m_view->setFocus();
    const quint32 presses = eventMask::leftMouseDown | eventMask::rightMouseDown;
    m_clicks = m_ports.monitors.addGlobalMonitor(presses, [this](const InputEvent &) { clickedElsewhere(); });
    m_ownClicks = m_ports.monitors.addLocalMonitor(presses, [this](const InputEvent &) {
        clickedElsewhere();
        return false;
    });
    if (isHeld)
        m_heldPulse = m_ports.time.repeat(heldPulse, [this] { followHeldPress(); });
}

void StatusMenuPanel::followHeldPress() {
    const auto [pointer, buttons] = m_ports.screens.pointer();
    const bool isHeld = buttons != 0;
    const auto ended = isHeld ? nullptr : std::move(m_heldPulse);
    const QRectF frame = m_panel.frame();
    const double way = (pointer - m_place).manhattanLength();
    if (way >= QApplication::startDragDistance())
        m_view->followHeldPress(QPointF(pointer.x() - frame.left(), maxY(frame) - pointer.y()).toPoint(), isHeld);
}

void StatusMenuPanel::clickedElsewhere() {
    if (!m_ports.windows.isAsking() && !StatusMenuView::hasMenuOpen() &&
        m_panel.isVisibleAndWithout(m_ports.screens.mouseLocation()))
        m_ports.time.async(this, [this] { // the monitors end with it
            m_pressedElsewhereAt = m_ports.time.systemUptime();
            cancelTracking();
        });
}

void StatusMenuPanel::cancelTracking() {
    if (!isOpen())
        return;
    m_clicks.reset();
    m_ownClicks.reset();
    m_heldPulse.reset();
    m_panel.dismiss(Dismissal::atOnce);
}

/// Away from the item: down from a tray at the top, up from one at the bottom.
std::optional<QRectF> StatusMenuPanel::frameAt(const Screens &screens) const {
    const auto screen = screenAt(screens, m_place);
    if (!screen)
        return std::nullopt;
    const QRectF usable = usableFrame(*screen);
    const QSizeF size = QSizeF(m_view->sizeHint()).boundedTo(usable.size());
    const bool isAtTop = m_place.y() > screen->frame.center().y();
    const double y = isAtTop ? m_place.y() - gap - size.height() : m_place.y() + gap;
    return movedInto(usable, {{m_place.x() - size.width() / 2, y}, size});
}

void StatusMenuPanel::resize() {
    if (!isOpen())
        return;
    if (const auto frame = frameAt(m_ports.screens))
        m_panel.window()->setFrame(*frame);
}

} // namespace tavrine
