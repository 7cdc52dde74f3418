#include "capture/editor/Flattening.h"

#include "capture/PictureScale.h"
#include "capture/editor/AnnotationRenderer.h"
#include "capture/editor/Paintable.h"

#include <QPainter>

#include <cmath>

namespace tavrine {
namespace {

constexpr double smallestCrop = 2.0; // whole pixels, and this is too small as well
constexpr double rounding = 1e-6;

} // namespace

QImage flattenedImage(const QImage &base, const std::vector<DrawingPath> &drawings) {
    if (base.isNull())
        return {};
    QImage flat = paintable(base);
    if (drawings.empty())
        return flat;
    const QSizeF size = base.deviceIndependentSize();
    QPainter painter;
    if (!painter.begin(&flat))
        return {}; // no memory for pixels of its own: nothing rather than a picture without its annotations
    painter.translate(0, size.height()); // the origin at the bottom left
    painter.scale(1, -1);
    for (const DrawingPath &path : drawings)
        renderDrawing(painter, path, flippedPointsIn(path, size), true);
    painter.end();
    return flat;
}

std::optional<QImage> cropImage(const QImage &image, const QRectF &rect) {
    if (image.isNull())
        return std::nullopt;
    const QRectF pixels(rect.x() * image.width(), rect.y() * image.height(), rect.width() * image.width(),
                        rect.height() * image.height());
    const auto isLargeEnough = [](double side) { return std::floor(side + rounding) > smallestCrop; };
    const bool isLarge = isLargeEnough(pixels.width()) && isLargeEnough(pixels.height()); // not for what is no number
    if (!isLarge || !std::isfinite(pixels.x()) || !std::isfinite(pixels.y()))
        return std::nullopt;
    // A part that begins or ends within a pixel takes that pixel whole; a fraction that was meant to end between two
    // pixels must not take one more for its rounding.
    const QRectF meant = pixels.adjusted(rounding, rounding, -rounding, -rounding);
    const QRect part = (meant & QRectF(image.rect())).toAlignedRect() & image.rect();
    if (part.isEmpty())
        return std::nullopt;
    QImage cropped = image.copy(part);
    if (cropped.isNull())
        return std::nullopt; // no memory
    return withoutScale(std::move(cropped));
}

} // namespace tavrine
