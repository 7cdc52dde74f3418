#pragma once

#include "adapters/frozen/OverlayEvent.h"

#include <QPoint>
#include <QRect>

#include <optional>
#include <vector>

namespace tavrine {

/// What a person has chosen of the frozen screen so far. Fed with pointer and keys, it knows no windows and no pixels.
///
/// Owned by the capture. Places are device pixels; a selection holds both the pixel where the drag began and the one
/// under the pointer, so that a drag from corner to corner is the whole screen.
///
///  - aiming: a press of the left button begins a drag. Arrow keys move the pointer by a pixel, with Shift or Control
///    by ten. Return begins a drag of the keys, for who has no pointer or cannot hold a button.
///  - dragging: the release accepts, so does Return. Arrow keys move the selection, with Shift its free corner. A press
///    and release on one pixel chooses nothing and aims again.
///  - dragging by keys: arrow keys go on moving the pointer, which is the free corner, by a pixel or by ten; so
///    does the mouse. Return, Space or a click accepts, once the corner has moved.
///  - picking (Space turns it on and off): the window under the pointer, else the monitor; a click takes it, or Return.
///  - Escape and a click of the right button cancel, whatever the state.
class SelectionModel {
public:
    enum class State { aiming, dragging, picking, accepted, cancelled };

    SelectionModel(const QRect &screen, QPoint pointer);

    /// What can be picked: the windows, the topmost first, and behind them the monitors.
    void setTargets(std::vector<QRect> targets);
    /// A part of the screen that a selection does not leave once it has begun there, nor do keys; without any that is
    /// the whole screen.
    void addPlane(const QRect &area) { m_planes.push_back(area); }

    void pointerMoved(QPoint place);
    void buttonPressed(int button, QPoint place);
    void buttonReleased(int button, QPoint place);
    void keyPressed(OverlayKey key, bool isShift, bool isControl, bool isRepeated);

    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] bool isFinished() const { return m_state == State::accepted || m_state == State::cancelled; }
    /// The pixel that is aimed at: the pointer, or the free corner of a drag.
    [[nodiscard]] QPoint pointer() const { return m_corner; }
    /// What would be taken now, never empty and always within the screen. None while aiming, and over nothing.
    [[nodiscard]] std::optional<QRect> selection() const;
    /// Where the drag began; the pointer outside a drag.
    [[nodiscard]] QPoint anchor() const { return m_state == State::dragging ? m_anchor : m_corner; }
    /// Where the desktop's pointer must go because keys moved it; asked for once.
    [[nodiscard]] std::optional<QPoint> takePointerMove();

private:
    [[nodiscard]] QPoint kept(QPoint place) const;
    [[nodiscard]] QRect planeAt(QPoint place) const;
    [[nodiscard]] std::optional<QRect> target() const;
    [[nodiscard]] bool isOvertaken(QPoint place);
    void beginDrag(bool isByKeys);
    void accept();
    void moveByKey(QPoint direction, bool isShift, bool isControl);

    QRect m_screen;
    State m_state = State::aiming;
    std::vector<QRect> m_targets;
    std::vector<QRect> m_planes;
    QRect m_bounds; ///< of what goes on now
    QPoint m_corner;
    QPoint m_anchor;
    QPoint m_offset;              ///< what keys added to the pointer's place during this drag
    bool m_wasChanged = false;    ///< the drag left its first pixel, or keys changed it
    bool m_isKeyDrag = false;     ///< no button is held for the drag
    bool m_isTakePressed = false; ///< the press of a click that accepts
    bool m_isCancelPressed = false;
    std::optional<QRect> m_taken;
    std::optional<QPoint> m_pointerMove;
    std::vector<QPoint> m_awaited; ///< where the pointer was sent and has not been seen yet, in their order
};

} // namespace tavrine
