#include "adapters/gnome/cast/CastArea.h"

#include "adapters/stream/StreamPlan.h"

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr int longestStep = 32;
constexpr double exact = 1e-4;

/// The shortest length of the plane that is a whole number of pixels; the display's own where none is short.
int stepOf(double fineness, int display) {
    for (int step = 1; step <= longestStep; ++step)
        if (std::abs(step * fineness - std::round(step * fineness)) < exact)
            return step;
    return display;
}

struct Span {
    int from = 0;
    int to = 0; ///< the first behind it
};

/// The whole steps of the plane around some pixels.
Span stepsAround(int firstPixel, int pixels, int display, double fineness) {
    const int step = stepOf(fineness, display);
    const double pixelsOfStep = step * fineness;
    const int from = static_cast<int>(std::floor(firstPixel / pixelsOfStep + exact)) * step;
    const int to = static_cast<int>(std::ceil((firstPixel + pixels) / pixelsOfStep - exact)) * step;
    return {std::clamp(from, 0, display), std::clamp(to, 0, display)};
}

} // namespace

std::optional<CastArea> castAreaOf(const ScreenStreamConfiguration &configuration, const QRect &display,
                                   double fineness, double scale) {
    const double pixelsOfPoint = fineness * scale;
    const auto isOfScale = [pixelsOfPoint](double points, int pixels) {
        return std::abs(points * pixelsOfPoint - pixels) < 2; // rounded, and made even
    };
    const QRectF &source = configuration.sourceRect;
    if (!isOfScale(source.width(), configuration.width) || !isOfScale(source.height(), configuration.height))
        return std::nullopt;
    const auto pixels = [fineness](int length) { return static_cast<int>(std::lround(length * fineness)); };
    const QRect wanted =
        pixelsOf(configuration, {}, {pixels(display.width()), pixels(display.height())}, pixelsOfPoint);
    const Span across = stepsAround(wanted.x(), wanted.width(), display.width(), fineness);
    const Span down = stepsAround(wanted.y(), wanted.height(), display.height(), fineness);
    const QRect plane(across.from, down.from, across.to - across.from, down.to - down.from);
    return CastArea{.plane = plane.translated(display.topLeft()),
                    .pictures = {pixels(plane.width()), pixels(plane.height())},
                    .area = wanted.translated(-pixels(plane.x()), -pixels(plane.y()))};
}

} // namespace tavrine
