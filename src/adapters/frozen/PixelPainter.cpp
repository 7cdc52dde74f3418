#include "adapters/frozen/PixelPainter.h"

#include "adapters/frozen/GlyphFont.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tavrine {
namespace {

constexpr quint32 redAndBlue = 0xff00ff;
constexpr quint32 greenOnly = 0x00ff00;

quint32 scaled(quint32 pixel, quint32 part) {
    return (((pixel & redAndBlue) * part >> 8) & redAndBlue) | (((pixel & greenOnly) * part >> 8) & greenOnly);
}

/// `amount` of 0 to 256 of the colour over the pixel.
quint32 blended(quint32 pixel, quint32 colour, quint32 amount) {
    return scaled(pixel, 256 - amount) + scaled(colour, amount);
}

quint32 packed(Rgba colour) {
    return quint32{colour.red} << 16 | quint32{colour.green} << 8 | colour.blue;
}

quint32 amountOf(Rgba colour) {
    return colour.alpha + (colour.alpha >> 7); // 255 is all of it
}

/// How far the middle of a pixel is outside the edge of a rectangle with round corners; negative inside.
class RoundedEdge {
public:
    RoundedEdge(const QRectF &area, double radius)
        : m_x(area.center().x()), m_y(area.center().y()),
          m_radius(std::min({radius, area.width() / 2, area.height() / 2})), m_halfWidth(area.width() / 2 - m_radius),
          m_halfHeight(area.height() / 2 - m_radius) {}

    [[nodiscard]] double operator()(int x, int y) const {
        const double across = std::abs(x + 0.5 - m_x) - m_halfWidth;
        const double down = std::abs(y + 0.5 - m_y) - m_halfHeight;
        const double outside = std::hypot(std::max(across, 0.0), std::max(down, 0.0));
        return outside + std::min(std::max(across, down), 0.0) - m_radius;
    }

private:
    double m_x, m_y, m_radius, m_halfWidth, m_halfHeight;
};

} // namespace

PixelPainter::PixelPainter(PixelsToPaint target, const QRect &clip)
    : m_target(target), m_clip(clip.intersected(target.rect())) {}

void PixelPainter::copy(PixelsToRead source, const QRect &area) {
    const QRect part = area.intersected(m_clip);
    for (int y = part.top(); y <= part.bottom(); ++y)
        std::memcpy(m_target.line(y) + part.left(), source.line(y) + part.left(),
                    static_cast<size_t>(part.width()) * sizeof(quint32));
}

void PixelPainter::copyDimmed(PixelsToRead source, const QRect &area, quint32 keep) {
    const QRect part = area.intersected(m_clip);
    for (int y = part.top(); y <= part.bottom(); ++y) {
        const quint32 *const from = source.line(y);
        quint32 *const to = m_target.line(y);
        for (int x = part.left(); x <= part.right(); ++x)
            to[x] = scaled(from[x], keep);
    }
}

void PixelPainter::fill(const QRect &area, Rgba colour) {
    const QRect part = area.intersected(m_clip);
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x)
            m_target.line(y)[x] = blended(m_target.line(y)[x], packed(colour), amountOf(colour));
}

template <class Coverage>
void PixelPainter::shape(const QRectF &bounds, Rgba colour, Coverage coverage) {
    const QRect part = bounds.toAlignedRect().adjusted(-1, -1, 1, 1).intersected(m_clip);
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x) {
            const double covered = std::clamp(coverage(x, y), 0.0, 1.0);
            if (covered > 0)
                m_target.line(y)[x] = blended(m_target.line(y)[x], packed(colour),
                                              static_cast<quint32>(std::lround(covered * amountOf(colour))));
        }
}

void PixelPainter::fillRounded(const QRectF &area, double radius, Rgba colour) {
    shape(area, colour, [edge = RoundedEdge(area, radius)](int x, int y) { return 0.5 - edge(x, y); });
}

void PixelPainter::strokeRounded(const QRectF &area, double radius, double width, Rgba colour) {
    const double half = width / 2;
    shape(area.adjusted(-half, -half, half, half), colour,
          [edge = RoundedEdge(area, radius), half](int x, int y) { return half + 0.5 - std::abs(edge(x, y)); });
}

void PixelPainter::shadowRounded(const QRectF &area, double radius, double blur, Rgba colour) {
    shape(area.adjusted(-blur, -blur, blur, blur), colour, [edge = RoundedEdge(area, radius), blur](int x, int y) {
        const double distance = edge(x, y);
        if (distance < -1 || distance > blur)
            return 0.0;
        const double left = 1 - std::max(distance, 0.0) / blur;
        return left * left;
    });
}

void PixelPainter::text(QPoint origin, const GlyphFont &font, std::u32string_view text, Rgba colour) {
    for (const char32_t letter : text) {
        const GlyphFont::Glyph &glyph = font.glyph(letter);
        const QPoint corner = origin + QPoint(glyph.left, -glyph.top);
        const QRect part = QRect(corner, QSize(glyph.width, glyph.height)).intersected(m_clip);
        for (int y = part.top(); y <= part.bottom(); ++y)
            for (int x = part.left(); x <= part.right(); ++x) {
                const quint32 covered =
                    glyph.coverage[static_cast<size_t>(y - corner.y()) * static_cast<size_t>(glyph.width) +
                                   static_cast<size_t>(x - corner.x())];
                m_target.line(y)[x] =
                    blended(m_target.line(y)[x], packed(colour), (covered * amountOf(colour) + 127) / 255);
            }
        origin.rx() += glyph.advance;
    }
}

} // namespace tavrine
