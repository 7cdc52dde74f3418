#pragma once

#include "adapters/wayland/WaylandLink.h"

#include <memory>

namespace tavrine {

/// What the session's compositor gives a program like this one.
enum class WaylandSession {
    none,   ///< there is no Wayland compositor, or it does not answer
    native, ///< panels over everything, and the clipboard in the background: the layer shell and data control
    managed ///< neither: windows stand as the compositor wants them
};

/// Whoever starts beside a compositor that stands still has nothing to show before it goes on, and what is chosen
/// without its answer holds until the program ends: on a Plasma, an X program without a paste.
inline constexpr WaylandLink::Wait longestSessionWait{60'000};

/// Asks the compositor of $WAYLAND_DISPLAY: a round trip. A compositor that keeps it waiting is told of on standard
/// output. `connection` is the one that was made for it, and none where the session is none.
[[nodiscard]] WaylandSession waylandSession(std::shared_ptr<WaylandConnection> &connection,
                                            WaylandLink::Wait longest = longestSessionWait);

} // namespace tavrine
