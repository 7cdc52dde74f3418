#pragma once

#include "capture/editor/DrawingPath.h"

#include <QImage>

namespace tavrine {

/// The picture with the annotations in its pixels, at its own size: they are drawn in the picture's points, their line
/// widths and letters as they are. Same pixel size and scale as `base`; null when that is, and when there is no
/// memory for it. Main thread.
[[nodiscard]] QImage flattenedImage(const QImage &base, const std::vector<DrawingPath> &drawings);

/// The part of the picture within `rect`, which is in fractions of it with the origin at the top left. Its size in
/// points is that in pixels, whatever the scale of `image`. None when the part is not wider and higher than two
/// whole pixels, and when there is no memory for it.
[[nodiscard]] std::optional<QImage> cropImage(const QImage &image, const QRectF &rect);

} // namespace tavrine
