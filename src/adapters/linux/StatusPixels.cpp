#include "adapters/linux/StatusPixels.h"

#include <QPainter>

namespace tavrine {

QImage statusPixels(const StatusImage &image, double scale, const QColor &symbolColor) {
    constexpr double largest = 2048;
    if (!image.draw || image.width <= 0 || image.height <= 0 || scale <= 0 || image.width * scale > largest ||
        image.height * scale > largest)
        return {};
    QImage pixels = image.draw(scale).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    pixels.setDevicePixelRatio(1);
    if (!pixels.isNull() && image.isTemplate) {
        QPainter painter(&pixels);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(pixels.rect(), symbolColor);
    }
    return pixels;
}

} // namespace tavrine
