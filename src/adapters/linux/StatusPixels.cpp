#include "adapters/linux/StatusPixels.h"

#include <QPainter>

namespace tavrine {

QColor symbolColorOn(const QImage &background) {
    constexpr int half = 128;
    const QColor mean = background.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).pixelColor(0, 0);
    return mean.alpha() > half && qGray(mean.rgb()) > half ? darkSymbolColor : lightSymbolColor;
}

QImage statusPixels(const StatusImage &image, const StatusGround &ground) {
    constexpr double largest = 2048;
    const double scale = ground.scale;
    if (!image.draw || image.width <= 0 || image.height <= 0 || scale <= 0 || image.width * scale > largest ||
        image.height * scale > largest)
        return {};
    QImage pixels = image.draw(ground).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    pixels.setDevicePixelRatio(1);
    if (!pixels.isNull() && image.isTemplate) {
        QPainter painter(&pixels);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(pixels.rect(), ground.label);
    }
    return pixels;
}

} // namespace tavrine
