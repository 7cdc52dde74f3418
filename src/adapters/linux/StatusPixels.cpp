#include "adapters/linux/StatusPixels.h"

#include <QPainter>

#include <algorithm>

namespace tavrine {

QColor symbolColorOn(const QImage &background) {
    constexpr int half = 128;
    const QColor mean = background.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).pixelColor(0, 0);
    return mean.alpha() > half && qGray(mean.rgb()) > half ? darkSymbolColor : lightSymbolColor;
}

namespace {

/// Where pictures are fitted into a square this changes nothing, and there are hosts that show nothing but squares.
QImage inSquare(const QImage &image) {
    if (image.width() == image.height())
        return image;
    const int edge = std::max(image.width(), image.height());
    QImage square(edge, edge, QImage::Format_ARGB32_Premultiplied);
    square.fill(Qt::transparent);
    QPainter painter(&square);
    painter.drawImage((edge - image.width()) / 2, (edge - image.height()) / 2, image);
    return square;
}

} // namespace

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
    return ground.isSquare ? inSquare(pixels) : pixels;
}

} // namespace tavrine
