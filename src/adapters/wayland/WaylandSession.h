#pragma once

namespace tavrine {

/// What the session's compositor gives a program like this one.
enum class WaylandSession {
    none,   ///< there is no Wayland compositor, or it does not answer
    native, ///< panels over everything, and the clipboard in the background: the layer shell and data control
    managed ///< neither: windows stand as the compositor wants them
};

/// Asks the compositor of $WAYLAND_DISPLAY. A round trip; two seconds at most.
[[nodiscard]] WaylandSession waylandSession();

} // namespace tavrine
