#include "adapters/frozen/OverlayMonitor.h"

#include <algorithm>

namespace tavrine {

const OverlayMonitor &monitorAt(const std::vector<OverlayMonitor> &monitors, QPoint place) {
    const auto found = std::find_if(monitors.begin(), monitors.end(),
                                    [place](const OverlayMonitor &monitor) { return monitor.area.contains(place); });
    return found == monitors.end() ? monitors.front() : *found;
}

double largestScale(const std::vector<OverlayMonitor> &monitors, const QRect &area) {
    double scale = 1;
    for (const OverlayMonitor &monitor : monitors)
        if (monitor.area.intersects(area))
            scale = std::max(scale, monitor.scale);
    return scale;
}

} // namespace tavrine
