#pragma once

#include <QPointF>
#include <QRectF>

namespace tavrine {

/// A rectangle of the toolkit's plane (origin top left, y downwards) on the plane of `Screens`, and the other way
/// round: the same turn, about the bottom left corner of the first screen.
[[nodiscard]] QRectF flippedRect(const QRectF &rect);
[[nodiscard]] QPointF flippedPoint(QPointF point);

} // namespace tavrine
