#pragma once

#include <QRect>

#include <vector>

namespace tavrine {

/// A monitor: its part of the screen in device pixels, and how large things are on it.
struct OverlayMonitor {
    QRect area;
    double scale = 1;
};

/// The one with the place; of places between monitors the first one's.
[[nodiscard]] const OverlayMonitor &monitorAt(const std::vector<OverlayMonitor> &monitors, QPoint place);

/// Of the monitors that the area touches; 1 when it touches none.
[[nodiscard]] double largestScale(const std::vector<OverlayMonitor> &monitors, const QRect &area);

} // namespace tavrine
