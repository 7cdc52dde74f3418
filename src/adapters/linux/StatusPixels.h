#pragma once

#include "ports/StatusItem.h"

#include <QColor>
#include <QImage>

namespace tavrine {

/// The colours that a symbol takes where the tray does not say one. Nearly all panels are dark, so light is the
/// default.
inline constexpr QColor lightSymbolColor{0xf2, 0xf2, 0xf2};
inline constexpr QColor darkSymbolColor{0x2e, 0x34, 0x36};

/// The image at `scale` device pixels per point, a template in `symbolColor`. Null when there is nothing to draw or the
/// result would be larger than any tray (2048 pixels).
[[nodiscard]] QImage statusPixels(const StatusImage &image, double scale, const QColor &symbolColor);

} // namespace tavrine
