#include "capture/editor/PlusDarker.h"

#include <QImage>
#include <QPaintEngine>
#include <QPainter>
#include <QPixmap>

#include <algorithm>

namespace tavrine {
namespace {

// A layer is worked on in tiles that stay in the processor's cache: a long slanting stroke touches few of them.
constexpr int tileWidth = 256;
constexpr int tileHeight = 64;
constexpr double softEdge = 2; // device pixels round a tile whose contents may colour its pixels

// The pixels that the painter paints on, in device coordinates. Null where they cannot be read.
QImage pixelsUnder(const QPainter &painter, const QRect &rect) {
    // Not the painter's device: of a widget, that is the widget, and the engine's is the surface behind it.
    const QPaintEngine *engine = painter.paintEngine();
    const QPaintDevice *device = engine ? engine->paintDevice() : nullptr;
    if (!device)
        return {};
    if (device->devType() == QInternal::Image)
        return static_cast<const QImage *>(device)->copy(rect);
    if (device->devType() == QInternal::Pixmap)
        return static_cast<const QPixmap *>(device)->copy(rect).toImage();
    return {};
}

QRect deviceRect(const QPainter &painter) {
    const QPaintEngine *engine = painter.paintEngine();
    const QPaintDevice *device = engine ? engine->paintDevice() : painter.device();
    if (device && (device->devType() == QInternal::Image || device->devType() == QInternal::Pixmap))
        return QRect(0, 0, device->width(), device->height());
    return QRect(-16384, -16384, 32768, 32768);
}

} // namespace

void plusDarker(std::uint32_t *destination, const std::uint32_t *source, std::size_t count) {
    // Whole numbers of 0 to 255 for 0 to 1. No branches, so that the compiler does several pixels at a time.
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t below = destination[i];
        const std::uint32_t above = source[i];
        const int belowAlpha = static_cast<int>(below >> 24);
        const int aboveAlpha = static_cast<int>(above >> 24);
        const int alpha = std::min(255, belowAlpha + aboveAlpha);
        const int rest = alpha - belowAlpha - aboveAlpha;
        const int red =
            std::max(0, rest + static_cast<int>((below >> 16) & 255) + static_cast<int>((above >> 16) & 255));
        const int green =
            std::max(0, rest + static_cast<int>((below >> 8) & 255) + static_cast<int>((above >> 8) & 255));
        const int blue = std::max(0, rest + static_cast<int>(below & 255) + static_cast<int>(above & 255));
        destination[i] = static_cast<std::uint32_t>(alpha) << 24 | static_cast<std::uint32_t>(red) << 16 |
                         static_cast<std::uint32_t>(green) << 8 | static_cast<std::uint32_t>(blue);
    }
}

void paintPlusDarker(QPainter &painter, const QRectF &bounds, const PaintPart &paint) {
    const QTransform toDevice = painter.deviceTransform();
    // What lies far outside has no whole numbers.
    const auto onDevice = [&, device = QRectF(deviceRect(painter))](const QRectF &points) {
        return toDevice.mapRect(points).adjusted(-1, -1, 1, 1).intersected(device).toAlignedRect();
    };
    QRect area = onDevice(bounds);
    if (painter.hasClipping())
        area &= onDevice(painter.clipBoundingRect());
    if (area.isEmpty())
        return;

    painter.save();
    const QPainter::RenderHints hints = painter.renderHints();
    painter.resetTransform();
    const QTransform toPoints = painter.deviceTransform().inverted();
    const QTransform fromDevice = toDevice.inverted();
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    QImage layer(std::min(tileWidth, area.width()), std::min(tileHeight, area.height()),
                 QImage::Format_ARGB32_Premultiplied);
    layer.fill(Qt::transparent);
    for (int y = area.top(); y <= area.bottom(); y += tileHeight) {
        for (int x = area.left(); x <= area.right(); x += tileWidth) {
            const QRect tile = QRect(x, y, tileWidth, tileHeight).intersected(area);
            const QRectF part = fromDevice.mapRect(QRectF(tile).adjusted(-softEdge, -softEdge, softEdge, softEdge));
            QPainter onLayer(&layer);
            onLayer.setRenderHints(hints);
            onLayer.setTransform(toDevice * QTransform::fromTranslate(-tile.x(), -tile.y()));
            if (!paint(onLayer, part))
                continue;
            onLayer.end();
            QImage result = pixelsUnder(painter, tile).convertToFormat(QImage::Format_ARGB32_Premultiplied);
            if (result.isNull()) {
                painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
                result = layer.copy(QRect(QPoint(), tile.size()));
            } else {
                result.setDevicePixelRatio(1);
                for (int row = 0; row < tile.height(); ++row)
                    plusDarker(reinterpret_cast<std::uint32_t *>(result.scanLine(row)),
                               reinterpret_cast<const std::uint32_t *>(layer.constScanLine(row)),
                               static_cast<std::size_t>(tile.width()));
            }
            painter.setWorldTransform(QTransform::fromTranslate(tile.x(), tile.y()) * toPoints);
            painter.drawImage(0, 0, result);
            layer.fill(Qt::transparent);
        }
    }
    painter.restore();
}

} // namespace tavrine
