#include "adapters/frozen/OverlayPaint.h"

#include "adapters/frozen/GlyphFont.h"
#include "adapters/frozen/PixelPainter.h"

#include <algorithm>
#include <cmath>

namespace tavrine::overlayPaint {
namespace {

constexpr Rgba labelGround{24, 24, 27, 230};
constexpr Rgba labelEdge{255, 255, 255, 46};
constexpr Rgba labelText{255, 255, 255, 255};
constexpr Rgba beyondPicture{38, 38, 42, 255};
constexpr double labelHeight = 26;
constexpr double labelPadding = 11;
constexpr double labelRadius = 8;
constexpr double swatchSide = 13;
constexpr double swatchGap = 7;

int rounded(double value) {
    return static_cast<int>(std::lround(value));
}

bool isLight(Rgba colour) {
    return colour.red * 299 + colour.green * 587 + colour.blue * 114 > 128'000;
}

void cellGround(PixelPainter &painter, const MagnifierGeometry &geometry, PixelsToRead picture) {
    // One circle's worth of cells, cut to the circle by its own radius; the rim covers the edge.
    const QPointF middle = QRectF(geometry.circle).center();
    const double radius = geometry.circle.width() / 2.0;
    for (int row = 0; row < MagnifierGeometry::cells; ++row)
        for (int y = geometry.cellRect(0, row).top(); y <= geometry.cellRect(0, row).bottom(); ++y) {
            const double down = y + 0.5 - middle.y();
            const double half = std::sqrt(std::max(0.0, radius * radius - down * down));
            const int first = rounded(middle.x() - half);
            const int last = rounded(middle.x() + half) - 1;
            for (int column = 0; column < MagnifierGeometry::cells; ++column) {
                const QRect cell = geometry.cellRect(column, row);
                const QPoint pixel = geometry.pixelAt(column, row);
                const int left = std::max(first, cell.left());
                const int right = std::min(last, cell.right());
                if (left <= right)
                    painter.fill({left, y, right - left + 1, 1},
                                 picture.contains(pixel) ? opaque(picture.at(pixel)) : beyondPicture);
            }
        }
}

/// Thin lines between the cells, faint on both light and dark pixels.
void grid(PixelPainter &painter, const MagnifierGeometry &geometry, int width) {
    const QPointF middle = QRectF(geometry.circle).center();
    const double radius = geometry.circle.width() / 2.0;
    for (int i = 1; i < MagnifierGeometry::cells; ++i) {
        const double offset = i * geometry.cell - radius;
        const int half = rounded(std::sqrt(std::max(0.0, radius * radius - offset * offset)));
        const int along = i * geometry.cell - width / 2;
        for (const Rgba colour : {Rgba{0, 0, 0, 38}, Rgba{255, 255, 255, 26}}) {
            painter.fill({geometry.circle.x() + along, rounded(middle.y()) - half, width, half * 2}, colour);
            painter.fill({rounded(middle.x()) - half, geometry.circle.y() + along, half * 2, width}, colour);
        }
    }
}

} // namespace

int fontSize(double scale) {
    return rounded(13 * scale);
}

QSize labelSize(const GlyphFont &font, std::u32string_view text, double scale, bool hasSwatch) {
    const int swatch = hasSwatch ? rounded((swatchSide + swatchGap) * scale) : 0;
    return {font.width(text) + swatch + 2 * rounded(labelPadding * scale), rounded(labelHeight * scale)};
}

void label(PixelPainter &painter, const QRect &area, const GlyphFont &font, std::u32string_view text, double scale,
           std::optional<Rgba> swatch) {
    const double radius = labelRadius * scale;
    painter.shadowRounded(area, radius, 6 * scale, {0, 0, 0, 70});
    painter.fillRounded(area, radius, labelGround);
    const double half = std::max(1.0, std::floor(scale)) / 2;
    painter.strokeRounded(QRectF(area).adjusted(half, half, -half, -half), radius - half, half * 2, labelEdge);
    // In the middle: the room may be that of a wider text.
    const int contentWidth = font.width(text) + (swatch ? rounded((swatchSide + swatchGap) * scale) : 0);
    int x = area.x() + (area.width() - contentWidth) / 2;
    if (swatch) {
        const int side = rounded(swatchSide * scale);
        const QRectF patch(x, area.y() + (area.height() - side) / 2, side, side);
        painter.fillRounded(patch, 3 * scale, *swatch);
        painter.strokeRounded(patch.adjusted(half, half, -half, -half), 3 * scale - half, half * 2,
                              {255, 255, 255, 110});
        x += rounded((swatchSide + swatchGap) * scale);
    }
    const int baseline = area.y() + (area.height() + font.digitHeight()) / 2;
    painter.text({x, baseline}, font, text, labelText);
}

void magnifier(PixelPainter &painter, const MagnifierGeometry &geometry, PixelsToRead picture, double scale) {
    const QRectF circle(geometry.circle);
    const double radius = circle.width() / 2;
    painter.shadowRounded(circle.adjusted(-2 * scale, -2 * scale, 2 * scale, 2 * scale), radius + 2 * scale, 12 * scale,
                          {0, 0, 0, 110});
    cellGround(painter, geometry, picture);
    const int line = std::max(1, static_cast<int>(scale));
    grid(painter, geometry, line);

    const int middleCell = MagnifierGeometry::cells / 2;
    const QRectF middle(geometry.cellRect(middleCell, middleCell));
    const bool isOnLight = picture.contains(geometry.pixel) && isLight(opaque(picture.at(geometry.pixel)));
    const double frame = 2 * scale;
    painter.strokeRounded(middle.adjusted(-frame, -frame, frame, frame), scale, frame,
                          isOnLight ? Rgba{255, 255, 255, 200} : Rgba{0, 0, 0, 170});
    painter.strokeRounded(middle.adjusted(-frame / 4, -frame / 4, frame / 4, frame / 4), scale / 2, frame * 0.75,
                          isOnLight ? Rgba{0, 0, 0, 235} : Rgba{255, 255, 255, 255});

    painter.strokeRounded(circle.adjusted(-scale, -scale, scale, scale), radius + scale, 3 * scale,
                          {250, 250, 250, 255});
    painter.strokeRounded(circle.adjusted(-3 * scale, -3 * scale, 3 * scale, 3 * scale), radius + 3 * scale, scale,
                          {0, 0, 0, 90});
    painter.strokeRounded(circle.adjusted(scale, scale, -scale, -scale), radius - scale, scale, {0, 0, 0, 70});
}

} // namespace tavrine::overlayPaint
