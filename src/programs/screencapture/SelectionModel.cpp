#include "programs/screencapture/SelectionModel.h"

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

constexpr int leftButton = 1;
constexpr int rightButton = 3;
constexpr int longStep = 10;
constexpr std::size_t mostAwaited = 64;

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

/// The pointer follows the keys late: where it comes to while further keys have sent it on is no news.
bool SelectionModel::isOvertaken(QPoint place) {
    const auto found = std::find(m_awaited.begin(), m_awaited.end(), place);
    const bool isOurs = found != m_awaited.end();
    m_awaited.erase(m_awaited.begin(), isOurs ? found + 1 : m_awaited.end());
    return isOurs && (m_pointerMove || !m_awaited.empty());
}

void SelectionModel::pointerMoved(QPoint place) {
    if (isFinished() || isOvertaken(place))
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
    if (button != leftButton || (m_state == State::dragging && !m_isKeyDrag))
        return;
    pointerMoved(place);
    if (m_state == State::aiming)
        beginDrag(false);
    else
        m_isTakePressed = true;
}

void SelectionModel::beginDrag(bool isByKeys) {
    m_state = State::dragging;
    m_isKeyDrag = isByKeys;
    m_anchor = m_corner;
    m_bounds = planeAt(m_anchor);
    m_offset = {};
    m_wasChanged = false;
    m_isTakePressed = false;
}

void SelectionModel::accept() {
    m_taken = selection();
    if (m_taken)
        m_state = State::accepted;
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
    if (m_state == State::dragging && !m_isKeyDrag && !m_wasChanged)
        m_state = State::aiming;
    else if ((m_state == State::dragging && !m_isKeyDrag) ||
             (std::exchange(m_isTakePressed, false) && (m_state == State::picking || m_wasChanged)))
        accept();
}

void SelectionModel::keyPressed(OverlayKey key, bool isShift, bool isControl, bool isRepeated) {
    if (isFinished())
        return;
    switch (key) {
    case OverlayKey::escape:
        m_state = State::cancelled;
        return;
    case OverlayKey::space:
        if (isRepeated)
            return;
        if (m_state != State::dragging) {
            m_state = m_state == State::picking ? State::aiming : State::picking;
            m_isTakePressed = false;
        } else if (m_isKeyDrag && m_wasChanged) {
            accept();
        }
        return;
    case OverlayKey::enter:
        if (isRepeated)
            return; // the key that began a drag, or that chose a menu's entry, does not end it
        if (m_state == State::aiming)
            beginDrag(true);
        else if (m_wasChanged || m_state == State::picking)
            accept();
        return;
    default:
        moveByKey(directionOf(key), isShift, isControl);
    }
}

void SelectionModel::moveByKey(QPoint direction, bool isShift, bool isControl) {
    if (direction.isNull())
        return;
    if (m_state != State::dragging || m_isKeyDrag) {
        if (m_state != State::dragging)
            m_bounds = planeAt(m_corner);
        const QPoint corner = kept(m_corner + direction * (isShift || isControl ? longStep : 1));
        m_wasChanged = m_wasChanged || corner != m_corner;
        m_corner = corner;
        m_pointerMove = m_corner;
        return;
    }
    const QPoint step = direction * (isControl ? longStep : 1);
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
    if (m_pointerMove)
        m_awaited.push_back(*m_pointerMove);
    if (m_awaited.size() > mostAwaited) // of a desktop that tells of no such move
        m_awaited.erase(m_awaited.begin());
    return std::exchange(m_pointerMove, std::nullopt);
}

} // namespace tavrine
