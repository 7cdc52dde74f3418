#pragma once

#include <xcb/xcb.h>

class QWindow;

namespace tavrine {

// The order in which this program's windows lie, asked of the server on a connection of its own and waited for a fifth
// of a second. Windows are those of the toolkit; what lies beside each other are the frames that a window manager put
// round them. Main thread.

/// Whether it floats over the windows of programs, as panels do.
[[nodiscard]] bool isFloating(const QWindow &window);
/// The frame of the lowest of this program's other floating windows that lie above this one; none where none does.
[[nodiscard]] xcb_window_t lowestFrameAbove(const QWindow &window);
/// The frame of a window; none for one that is gone, or when the server did not answer.
[[nodiscard]] xcb_window_t frameOf(const QWindow &window);
/// Puts a window that has no frame right below a frame.
void stackBelow(const QWindow &window, xcb_window_t frame);

} // namespace tavrine
