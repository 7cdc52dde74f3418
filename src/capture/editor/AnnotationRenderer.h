#pragma once

#include "capture/editor/DrawingPath.h"

#include <QRectF>

#include <span>

class QFont;
class QPainter;

namespace tavrine {

/// The one renderer of annotations, for the screen and for the finished picture. Free of state; any thread that may use
/// fonts.
///
/// A target whose origin is at the bottom left is a painter whose vertical axis points up (scaled by -1): what stands
/// upright, as letters do, is upright there too. An annotation with a point, or a width, that is no number draws
/// nothing.

/// Draws `path` with `points`, which are its points in the painter's coordinates; those within `path` are not read.
/// `flipText` is true when the target has its origin at the bottom left: the text then hangs down from its point, and
/// a text that would reach below 0, the target's lower edge, is moved up to stand on it.
void renderDrawing(QPainter &painter, const DrawingPath &path, std::span<const QPointF> points, bool flipText);

/// A line through all points, with round ends and joins. One point is no line and draws nothing.
void renderStroke(QPainter &painter, std::span<const QPointF> points, const QColor &color, double lineWidth);

/// A filled circle about (x, y) with a white outline and the number in white.
void renderStamp(QPainter &painter, int number, const QColor &color, double x, double y, double lineWidth);

/// What `renderDrawing` may colour, in the painter's coordinates; empty when that is nothing.
[[nodiscard]] QRectF drawingBounds(const DrawingPath &path, std::span<const QPointF> points, bool flipText);

/// The fractions as points of a target of that size: its origin at the top left, or, flipped, at the bottom left.
[[nodiscard]] std::vector<QPointF> pointsIn(const DrawingPath &path, const QSizeF &size);
[[nodiscard]] std::vector<QPointF> flippedPointsIn(const DrawingPath &path, const QSizeF &size);

/// The height of letters by the width of lines, in points: 18, 24 or 32.
[[nodiscard]] int annotationTextSize(double lineWidth);
/// What annotations are written in, and the field that they are typed into.
[[nodiscard]] QFont annotationFont(double lineWidth);
/// The size of a written text, in points.
[[nodiscard]] QSizeF annotationTextExtent(const QString &text, double lineWidth);
/// The stamp's diameter without its outline, in points: 26, 34 or 44.
[[nodiscard]] double stampDiameter(double lineWidth);

} // namespace tavrine
