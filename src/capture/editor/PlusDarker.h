#pragma once

#include <QRectF>

#include <cstddef>
#include <cstdint>
#include <functional>

class QPainter;

namespace tavrine {

/// The blend of a highlighter: what lies below gets darker by what the stroke takes away from white, and black stays
/// black. On premultiplied values, S of the stroke over D: Ra = min(1, Sa + Da), and R = max(0, Ra - ((Da - D) + (Sa -
/// S))) for each colour.

/// Blends `count` premultiplied pixels of `source` into `destination`.
void plusDarker(std::uint32_t *destination, const std::uint32_t *source, std::size_t count);

/// Paints what may colour `part`, which is in the painter's coordinates, or more. False when it painted nothing.
using PaintPart = std::function<bool(QPainter &painter, const QRectF &part)>;

/// What is painted by `paint`, which is asked for one part after the other with a painter of the same transformation,
/// is blended into the target as one layer, so that it does not darken itself. `bounds` holds all of it.
///
/// The target's pixels are read where the painter works on an image, a pixmap or a widget's raster surface. On any
/// other device (a page, a recorded picture) there is nothing to read, and the layer is laid over what is there.
void paintPlusDarker(QPainter &painter, const QRectF &bounds, const PaintPart &paint);

} // namespace tavrine
