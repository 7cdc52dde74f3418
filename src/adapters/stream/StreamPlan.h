#pragma once

#include "ports/ScreenStream.h"

#include <QRect>

namespace tavrine {

/// What a stream shows.
struct StreamPlan {
    QRect area; ///< pixels of the X server's root window, or of the one output of a Wayland compositor
    QList<WindowNumber> keptOut;
    bool showsPointer = true;
    std::chrono::nanoseconds interval{};
    int queueDepth = 1;
    QString output = {}; ///< its name, on Wayland
};

/// The pixels that a configuration means on a display that begins at `corner` and is `size` large, both in pixels, with
/// `scale` pixels a point. What is rounded up never reaches over the edge of the display.
[[nodiscard]] QRect pixelsOf(const ScreenStreamConfiguration &configuration, QPoint corner, QSize size, double scale);

} // namespace tavrine
