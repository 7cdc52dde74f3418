#include "adapters/frozen/SamplerPainter.h"

#include "adapters/frozen/OverlayPaint.h"
#include "adapters/frozen/PixelPainter.h"

#include <utility>

namespace tavrine {

void SamplerPainter::paintPicture(FrozenScreen &screen) {
    PixelPainter(screen.canvas(), screen.rect()).copy(screen.picture(), screen.rect());
}

std::vector<QRect> SamplerPainter::moveTo(FrozenScreen &screen, QPoint pixel) {
    if (std::exchange(m_pixel, pixel) == pixel)
        return {};
    const OverlayMonitor &monitor = monitorAt(screen.monitors(), pixel);
    const double scale = monitor.scale;
    if (!m_font || m_font->sizePx() != overlayPaint::fontSize(scale))
        m_font = std::make_unique<GlyphFont>(overlayPaint::fontSize(scale));
    const quint32 colour = screen.picture().at(pixel);
    // As wide as the widest value, so that it does not tremble on the way.
    const QSize room = overlayPaint::labelSize(*m_font, U"#DDDDDD", scale, true);
    const auto geometry = MagnifierGeometry::place(pixel, monitor.area, scale, room);
    const QRect before = std::exchange(m_painted, geometry.bounds());
    PixelPainter beneath(screen.canvas(), before);
    beneath.copy(screen.picture(), before);
    PixelPainter painter(screen.canvas(), m_painted);
    painter.copy(screen.picture(), m_painted);
    overlayPaint::magnifier(painter, geometry, screen.picture(), scale);
    overlayPaint::label(painter, geometry.label, *m_font, colourValue(colour), scale, opaque(colour));
    return {before, m_painted};
}

std::u32string colourValue(quint32 pixel) {
    std::u32string text = U"#";
    for (int shift = 20; shift >= 0; shift -= 4)
        text += U"0123456789ABCDEF"[pixel >> shift & 0xf];
    return text;
}

} // namespace tavrine
