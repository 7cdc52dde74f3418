#pragma once

#include "capture/editor/DrawingPath.h"

namespace tavrine {

/// How far the eraser reaches, as a part of the canvas' width and of its height.
inline constexpr double eraserReach = 0.03;

/// Whether the eraser at `point` takes the annotation away: one of its stored points is closer than its reach. All in
/// fractions of the canvas, so that the reach is an ellipse on a canvas that is not square. What lies between the
/// points is not looked at.
[[nodiscard]] bool isHitByEraser(const DrawingPath &path, const QPointF &point);

/// What the eraser at `point` leaves of the annotations, in their order.
[[nodiscard]] std::vector<DrawingPath> erased(const std::vector<DrawingPath> &drawings, const QPointF &point);

} // namespace tavrine
