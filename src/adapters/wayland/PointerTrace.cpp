#include "adapters/wayland/PointerTrace.h"

#include <QDragMoveEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QWindow>

#include <algorithm>

namespace tavrine {
namespace {

constexpr double beyond = 4; ///< points; the pointer was seen every few milliseconds

} // namespace

PointerTrace::PointerTrace() {
    qApp->installEventFilter(this);
}

PointerTrace::Followers::iterator PointerTrace::add(std::function<void()> follower) {
    return m_followers.insert(m_followers.end(), std::move(follower));
}

void PointerTrace::remove(Followers::iterator follower) {
    m_followers.erase(follower);
}

quint32 PointerTrace::pressedButtons() const {
    return (m_isDragged || m_buttons & Qt::LeftButton ? 1U : 0U) | (m_buttons & Qt::RightButton ? 2U : 0U) |
           (m_buttons & Qt::MiddleButton ? 4U : 0U);
}

void PointerTrace::setPlace(QPointF place) {
    m_place = place;
}

void PointerTrace::take(QWindow *window, QPointF place, bool isDragged) {
    m_window = window;
    m_place = place;
    m_isDragged = isDragged;
    for (auto each = m_followers.begin(); each != m_followers.end();) {
        const auto follower = each++; // it may be removed within
        (*follower)();
    }
}

void PointerTrace::leave(const QWindow &window) {
    m_buttons = {};
    if (window.screen() && window.geometry().contains(window.screen()->geometry()))
        return take(nullptr, m_place, false);
    const QRectF inside(window.geometry());
    QPointF place(std::clamp(m_place.x(), inside.left(), inside.right()),
                  std::clamp(m_place.y(), inside.top(), inside.bottom()));
    const double left = place.x() - inside.left();
    const double right = inside.right() - place.x();
    const double top = place.y() - inside.top();
    const double bottom = inside.bottom() - place.y();
    const double nearest = std::min({left, right, top, bottom});
    // An edge of the desktop is one that no pointer crosses.
    const QScreen *screen = QGuiApplication::primaryScreen();
    const double uppermost = screen ? screen->virtualGeometry().top() : 0;
    if (nearest == top && inside.top() > uppermost)
        place.setY(inside.top() - beyond);
    else if (nearest == left && left < bottom)
        place.setX(inside.left() - beyond);
    else if (nearest == right && right < bottom)
        place.setX(inside.right() + beyond);
    else
        place.setY(inside.bottom() + beyond);
    take(nullptr, place, false);
}

bool PointerTrace::eventFilter(QObject *object, QEvent *event) {
    if (!object->isWindowType())
        return false;
    auto *window = static_cast<QWindow *>(object);
    switch (event->type()) {
    case QEvent::Enter:
        take(window, window->mapToGlobal(static_cast<QEnterEvent *>(event)->position()), false);
        break;
    case QEvent::MouseMove:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
        m_buttons = static_cast<QMouseEvent *>(event)->buttons();
        take(window, static_cast<QMouseEvent *>(event)->globalPosition(), false);
        break;
    case QEvent::DragEnter:
    case QEvent::DragMove:
        take(window, window->mapToGlobal(static_cast<QDropEvent *>(event)->position()), true);
        break;
    case QEvent::Drop:
        take(window, window->mapToGlobal(static_cast<QDropEvent *>(event)->position()), false);
        break;
    case QEvent::Leave:
    case QEvent::DragLeave:
    case QEvent::Hide:
        if (m_window == window)
            leave(*window);
        break;
    default:
        break;
    }
    return false;
}

} // namespace tavrine
