#pragma once

#include "adapters/frozen/OverlayMonitor.h"
#include "adapters/x11/XcbLink.h"

#include <QRect>

#include <vector>

namespace tavrine {

/// All monitors together, in device pixels.
[[nodiscard]] inline QRect screenRect(const XcbLink &link) {
    return {0, 0, link.screen().width_in_pixels, link.screen().height_in_pixels};
}

/// The monitors as RandR tells them; the whole screen as one where it tells none.
[[nodiscard]] std::vector<OverlayMonitor> readMonitors(XcbLink &link);

/// What a person sees of each window on the screen, frames included and invisible shadows not, the topmost first, cut
/// to the screen. `except` is left out.
[[nodiscard]] std::vector<QRect> readWindows(XcbLink &link, xcb_window_t except);

} // namespace tavrine
