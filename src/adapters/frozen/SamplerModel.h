#pragma once

#include "adapters/frozen/OverlayEvent.h"

#include <QPoint>
#include <QRect>

#include <optional>

namespace tavrine {

/// Which pixel of the frozen screen a person points at, and whether it was taken. Fed with pointer and keys.
///
/// A click of the left button, Return or Space takes the pixel; Escape and a click of the right button cancel; arrow
/// keys move the pointer by a pixel, with Control by ten.
class SamplerModel {
public:
    enum class State { aiming, taken, cancelled };

    SamplerModel(const QRect &screen, QPoint pointer);

    void pointerMoved(QPoint place);
    void buttonPressed(int button, QPoint place);
    void buttonReleased(int button, QPoint place);
    void keyPressed(OverlayKey key, bool isControl);

    [[nodiscard]] State state() const { return m_state; }
    /// Always within the screen.
    [[nodiscard]] QPoint pixel() const { return m_pixel; }
    /// Where the desktop's pointer must go because keys moved it; asked for once.
    [[nodiscard]] std::optional<QPoint> takePointerMove();

private:
    QRect m_screen;
    State m_state = State::aiming;
    QPoint m_pixel;
    int m_pressed = 0; ///< the button whose release is awaited
    std::optional<QPoint> m_pointerMove;
};

} // namespace tavrine
