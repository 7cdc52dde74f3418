#pragma once

#include "adapters/frozen/Pixels.h"

#include <QRectF>

#include <string_view>

namespace tavrine {

class GlyphFont;

/// Paints into pixels in memory, edges smoothed, never outside its clip. It exists so that a capture is on the screen
/// before a toolkit would have started. A value for one turn of painting; any thread.
class PixelPainter {
public:
    PixelPainter(PixelsToPaint target, const QRect &clip);

    [[nodiscard]] const QRect &clip() const { return m_clip; }

    /// The same place of `source`, which is as large as the target: as it is, or with each channel at `keep`/256.
    void copy(PixelsToRead source, const QRect &area);
    void copyDimmed(PixelsToRead source, const QRect &area, quint32 keep);

    void fill(const QRect &area, Rgba colour);
    void fillRounded(const QRectF &area, double radius, Rgba colour);
    /// A line of `width` that lies half inside and half outside the edge of `area`.
    void strokeRounded(const QRectF &area, double radius, double width, Rgba colour);
    /// A shadow that is full at the edge of `area` and gone `blur` outside it; nothing within.
    void shadowRounded(const QRectF &area, double radius, double blur, Rgba colour);
    /// The text with its baseline beginning at `origin`.
    void text(QPoint origin, const GlyphFont &font, std::u32string_view text, Rgba colour);

private:
    template <class Coverage>
    void shape(const QRectF &bounds, Rgba colour, Coverage coverage);

    PixelsToPaint m_target;
    QRect m_clip;
};

} // namespace tavrine
