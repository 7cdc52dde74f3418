#include "programs/screencapture/SelectionModel.h"

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

constexpr int leftButton = 1;
constexpr int rightButton = 3;
constexpr int controlStep = 10;

QPoint directionOf(OverlayKey key) {
    switch (key) {
    case OverlayKey::left:
        return {-1, 0};
    case OverlayKey::right:
        return {1, 0};
    case OverlayKey::up:
        return {0, -1};
    case OverlayKey::down:
        return {0, 1};
    default:
        return {};
    }
}

/// The rectangle that has both pixels as corners.
QRect between(QPoint a, QPoint b) {
    return {QPoint(std::min(a.x(), b.x()), std::min(a.y(), b.y())),
            QPoint(std::max(a.x(), b.x()), std::max(a.y(), b.y()))};
}

} // namespace

SelectionModel::SelectionModel(const QRect &screen, QPoint pointer) : m_screen(screen), m_bounds(screen) {
    m_corner = kept(pointer);
}

void SelectionModel::setTargets(std::vector<QRect> targets) {
    for (QRect &area : targets)
        area &= m_screen;
    std::erase_if(targets, [](const QRect &area) { return area.isEmpty(); });
    m_targets = std::move(targets);
}

QPoint SelectionModel::kept(QPoint place) const {
    return {std::clamp(place.x(), m_bounds.left(), m_bounds.right()),
            std::clamp(place.y(), m_bounds.top(), m_bounds.bottom())};
}

QRect SelectionModel::planeAt(QPoint place) const {
    const auto found =
        std::find_if(m_planes.begin(), m_planes.end(), [place](const QRect &area) { return area.contains(place); });
    return found == m_planes.end() ? m_screen : *found;
}

std::optional<QRect> SelectionModel::target() const {
    const auto found =
        std::find_if(m_targets.begin(), m_targets.end(), [this](const QRect &area) { return area.contains(m_corner); });
    return found == m_targets.end() ? std::nullopt : std::optional(*found);
}

std::optional<QRect> SelectionModel::selection() const {
    switch (m_state) {
    case State::dragging:
        return between(m_anchor, m_corner);
    case State::picking:
        return target();
    case State::accepted:
        return m_taken;
    default:
        return std::nullopt;
    }
}

void SelectionModel::pointerMoved(QPoint place) {
    if (isFinished())
        return;
    if (m_state != State::dragging)
        m_bounds = m_screen;
    const QPoint corner = kept(m_state == State::dragging ? place + m_offset : place);
    m_wasChanged = m_wasChanged || corner != m_corner;
    m_corner = corner;
}

void SelectionModel::buttonPressed(int button, QPoint place) {
    if (isFinished())
        return;
    if (button == rightButton) {
        m_isCancelPressed = true;
        return;
    }
    if (button != leftButton || m_state == State::dragging)
        return;
    pointerMoved(place);
    if (m_state == State::picking) {
        m_isPickPressed = true;
        return;
    }
    m_state = State::dragging;
    m_anchor = m_corner;
    m_bounds = planeAt(m_anchor);
    m_offset = {};
    m_wasChanged = false;
}

void SelectionModel::buttonReleased(int button, QPoint place) {
    if (isFinished())
        return;
    // A release whose press went to another program means nothing here.
    if (button == rightButton && m_isCancelPressed) {
        m_state = State::cancelled;
        return;
    }
    if (button != leftButton)
        return;
    pointerMoved(place);
    if (m_state == State::dragging && !m_wasChanged) {
        m_state = State::aiming;
    } else if (m_state == State::dragging || (m_state == State::picking && std::exchange(m_isPickPressed, false))) {
        m_taken = selection();
        if (m_taken)
            m_state = State::accepted;
    }
}

void SelectionModel::keyPressed(OverlayKey key, bool isShift, bool isControl, bool isRepeated) {
    if (isFinished())
        return;
    switch (key) {
    case OverlayKey::escape:
        m_state = State::cancelled;
        return;
    case OverlayKey::space:
        if (m_state != State::dragging && !isRepeated) {
            m_state = m_state == State::picking ? State::aiming : State::picking;
            m_isPickPressed = false;
        }
        return;
    case OverlayKey::enter:
        if (const auto chosen = selection(); chosen && (m_wasChanged || m_state == State::picking)) {
            m_taken = chosen;
            m_state = State::accepted;
        }
        return;
    default:
        moveByKey(directionOf(key) * (isControl ? controlStep : 1), isShift);
    }
}

void SelectionModel::moveByKey(QPoint step, bool isShift) {
    if (step.isNull())
        return;
    if (m_state != State::dragging) {
        m_bounds = planeAt(m_corner);
        m_corner = kept(m_corner + step);
        m_pointerMove = m_corner;
        return;
    }
    QPoint moved = kept(m_corner + step) - m_corner;
    if (!isShift) {
        // The whole selection goes only as far as both of its corners can.
        const QPoint anchorMoved = kept(m_anchor + step) - m_anchor;
        const auto shorter = [](int a, int b) { return std::abs(a) < std::abs(b) ? a : b; };
        moved = {shorter(moved.x(), anchorMoved.x()), shorter(moved.y(), anchorMoved.y())};
        m_anchor += moved;
    }
    m_corner += moved;
    m_offset += moved;
    m_wasChanged = m_wasChanged || isShift;
}

std::optional<QPoint> SelectionModel::takePointerMove() {
    return std::exchange(m_pointerMove, std::nullopt);
}

} // namespace tavrine
