#pragma once

#include "adapters/frozen/MagnifierGeometry.h"
#include "adapters/frozen/Pixels.h"

#include <optional>
#include <string_view>

namespace tavrine {

class GlyphFont;
class PixelPainter;

/// How the things on a frozen screen look. All sizes grow with the monitor's scale.
namespace overlayPaint {

/// Out of 256: how much is left of what is not chosen.
inline constexpr quint32 dimmedKeep = 132;

/// The height of the letters on a label.
[[nodiscard]] int fontSize(double scale);

/// The room that a label takes. `hasSwatch`: with a patch of colour before the text.
[[nodiscard]] QSize labelSize(const GlyphFont &font, std::u32string_view text, double scale, bool hasSwatch = false);

/// A dark label that reads on every picture.
void label(PixelPainter &painter, const QRect &area, const GlyphFont &font, std::u32string_view text, double scale,
           std::optional<Rgba> swatch = std::nullopt);

/// The enlarged pixels in their circle, the middle one framed. What lies outside the picture is dark grey.
void magnifier(PixelPainter &painter, const MagnifierGeometry &geometry, PixelsToRead picture, double scale);

} // namespace overlayPaint
} // namespace tavrine
