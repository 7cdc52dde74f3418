#pragma once

#include "adapters/x11/XcbLink.h"

#include <QRect>

#include <vector>

namespace tavrine {

/// All monitors together, in device pixels.
[[nodiscard]] inline QRect screenRect(const XcbLink &link) {
    return {0, 0, link.screen().width_in_pixels, link.screen().height_in_pixels};
}

/// A monitor: its part of the screen in device pixels, and how large things are on it.
struct OverlayMonitor {
    QRect area;
    double scale = 1;
};

/// The monitors as RandR tells them; the whole screen as one where it tells none.
[[nodiscard]] std::vector<OverlayMonitor> readMonitors(XcbLink &link);

/// The one with the place; of places between monitors the first one's.
[[nodiscard]] const OverlayMonitor &monitorAt(const std::vector<OverlayMonitor> &monitors, QPoint place);

/// Of the monitors that the area touches; 1 when it touches none.
[[nodiscard]] double largestScale(const std::vector<OverlayMonitor> &monitors, const QRect &area);

/// What a person sees of each window on the screen, frames included and invisible shadows not, the topmost first, cut
/// to the screen. `except` is left out.
[[nodiscard]] std::vector<QRect> readWindows(XcbLink &link, xcb_window_t except);

} // namespace tavrine
