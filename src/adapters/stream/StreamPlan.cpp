#include "adapters/stream/StreamPlan.h"

#include <algorithm>
#include <cmath>

namespace tavrine {

QRect pixelsOf(const ScreenStreamConfiguration &configuration, QPoint corner, QSize size, double scale) {
    const QRectF &source = configuration.sourceRect;
    const QSize pixels(configuration.width, configuration.height);
    const auto place = [scale](double from, double length, int width, int limit) {
        const int first = static_cast<int>(std::lround(from * scale));
        const bool isInside = from >= 0 && std::lround((from + length) * scale) <= limit;
        return isInside ? std::clamp(first, 0, std::max(limit - width, 0)) : first;
    };
    return {corner + QPoint(place(source.x(), source.width(), pixels.width(), size.width()),
                            place(source.y(), source.height(), pixels.height(), size.height())),
            pixels};
}

} // namespace tavrine
