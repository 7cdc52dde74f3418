#pragma once

#include <QPoint>
#include <QRect>

namespace tavrine {

/// The keys that mean something over a frozen screen.
enum class OverlayKey { other, escape, space, enter, left, right, up, down };

/// The meaning of a key's symbol, as X11/keysymdef.h numbers them.
[[nodiscard]] OverlayKey overlayKeyOf(quint32 symbol);

/// What a person did over a frozen screen. Places are device pixels of the whole screen.
struct OverlayEvent {
    enum class Kind {
        pointerMoved,
        buttonPressed,
        buttonReleased,
        keyPressed,
        uncovered, ///< `area` must be put again
        ended,     ///< the screen changed, another capture began or the server went: nothing more will come
    };
    Kind kind = Kind::pointerMoved;
    QPoint place;
    int button = 0; ///< 1 is the left one, 2 the middle one, 3 the right one
    OverlayKey key = OverlayKey::other;
    bool isShift = false;
    bool isControl = false;
    bool isRepeated = false; ///< of a key that is held
    QRect area;
};

} // namespace tavrine
