#include "adapters/frozen/SamplerModel.h"

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

constexpr int leftButton = 1;
constexpr int rightButton = 3;
constexpr int controlStep = 10;

} // namespace

SamplerModel::SamplerModel(const QRect &screen, QPoint pointer) : m_screen(screen) {
    pointerMoved(pointer);
}

void SamplerModel::pointerMoved(QPoint place) {
    if (m_state == State::aiming)
        m_pixel = {std::clamp(place.x(), m_screen.left(), m_screen.right()),
                   std::clamp(place.y(), m_screen.top(), m_screen.bottom())};
}

void SamplerModel::buttonPressed(int button, QPoint place) {
    pointerMoved(place);
    if (button == leftButton || button == rightButton)
        m_pressed = button;
}

void SamplerModel::buttonReleased(int button, QPoint place) {
    // A release whose press went to another program means nothing here.
    if (m_state != State::aiming || button != m_pressed)
        return;
    pointerMoved(place);
    m_state = button == leftButton ? State::taken : State::cancelled;
}

void SamplerModel::keyPressed(OverlayKey key, bool isControl) {
    if (m_state != State::aiming)
        return;
    const int step = isControl ? controlStep : 1;
    const QPoint before = m_pixel;
    switch (key) {
    case OverlayKey::escape:
        m_state = State::cancelled;
        return;
    case OverlayKey::enter:
    case OverlayKey::space:
        m_state = State::taken;
        return;
    case OverlayKey::left:
        pointerMoved(m_pixel - QPoint(step, 0));
        break;
    case OverlayKey::right:
        pointerMoved(m_pixel + QPoint(step, 0));
        break;
    case OverlayKey::up:
        pointerMoved(m_pixel - QPoint(0, step));
        break;
    case OverlayKey::down:
        pointerMoved(m_pixel + QPoint(0, step));
        break;
    case OverlayKey::other:
        return;
    }
    if (m_pixel != before)
        m_pointerMove = m_pixel;
}

std::optional<QPoint> SamplerModel::takePointerMove() {
    return std::exchange(m_pointerMove, std::nullopt);
}

} // namespace tavrine
