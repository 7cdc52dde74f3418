#include "capture/editor/EraserRule.h"

#include <algorithm>
#include <iterator>

namespace tavrine {
namespace {

constexpr double reachSquared = 0.0009; // of `eraserReach`; that far is too far

} // namespace

bool isHitByEraser(const DrawingPath &path, const QPointF &point) {
    return std::any_of(path.points.begin(), path.points.end(), [&point](const QPointF &stored) {
        const QPointF away = stored - point;
        return away.x() * away.x() + away.y() * away.y() < reachSquared;
    });
}

std::vector<DrawingPath> erased(const std::vector<DrawingPath> &drawings, const QPointF &point) {
    std::vector<DrawingPath> left;
    left.reserve(drawings.size());
    std::copy_if(drawings.begin(), drawings.end(), std::back_inserter(left),
                 [&point](const DrawingPath &path) { return !isHitByEraser(path, point); });
    return left;
}

} // namespace tavrine
