#pragma once

#include "ports/Screens.h"

#include <QObject>
#include <QPointer>
#include <QWindow>

#include <functional>
#include <list>

namespace tavrine {

/// What this program's own windows hear of the pointer: on this desktop nobody tells of it elsewhere. Lives on the main
/// thread.
///
/// Where it has left them, it is taken to be just beyond the edge over which it went, and where it was when that window
/// covered a whole screen. While something is dragged over
/// one of them a button is down.
class PointerTrace final : public QObject {
public:
    PointerTrace();

    /// In the toolkit's plane.
    [[nodiscard]] QPointF place() const { return m_place; }
    [[nodiscard]] quint32 pressedButtons() const;
    /// Whether the pointer is over a window of this program, so that its place is known.
    [[nodiscard]] bool isOver() const { return m_window != nullptr; }
    /// Somebody has asked where it is.
    void setPlace(QPointF place);

    /// Somebody looks many times a second: nobody shall ask the compositor each time.
    void setPolled(bool isPolled) { m_polls += isPolled ? 1 : -1; }
    [[nodiscard]] bool isPolled() const { return m_polls > 0; }

    /// Called after each change, within the event. To be removed with what `add` returned.
    using Followers = std::list<std::function<void()>>;
    Followers::iterator add(std::function<void()> follower);
    void remove(Followers::iterator follower);

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void leave(const QWindow &window);
    void take(QWindow *window, QPointF place, bool isDragged);

    QPointF m_place;
    QPointer<QWindow> m_window;
    Qt::MouseButtons m_buttons; ///< the toolkit keeps that of a drag which has left
    bool m_isDragged = false;
    int m_polls = 0;
    Followers m_followers;
};

} // namespace tavrine
