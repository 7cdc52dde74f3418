#pragma once

#include "ports/ScreenStream.h"

#include <QRect>

namespace tavrine {

/// What a stream shows, in the X server's terms.
struct StreamPlan {
    QRect area; ///< of the root window, in pixels
    QList<WindowNumber> keptOut;
    bool showsPointer = true;
    std::chrono::nanoseconds interval{};
    int queueDepth = 1;
};

/// The pixels of the root window that a configuration means on a display that begins at `corner` of the root window and
/// is `size` large, both in pixels, with `scale` pixels a point. What is rounded up never reaches over the edge of the
/// display.
[[nodiscard]] QRect pixelsOf(const ScreenStreamConfiguration &configuration, QPoint corner, QSize size, double scale);

} // namespace tavrine
