#pragma once

#include "ports/StatusItem.h"

#include <QColor>
#include <QImage>

namespace tavrine {

/// The colours that a symbol takes where the tray does not say one. Nearly all panels are dark, so light is the
/// default.
inline constexpr QColor lightSymbolColor{0xf2, 0xf2, 0xf2};
inline constexpr QColor darkSymbolColor{0x2e, 0x34, 0x36};

/// The one of the two that is easier to see on `background`. The light one where that is mostly transparent.
[[nodiscard]] QColor symbolColorOn(const QImage &background);

/// The image on that ground, a template in its label colour; on a square ground always a square. Null when there is
/// nothing to draw or the result would be larger than any tray (2048 pixels).
[[nodiscard]] QImage statusPixels(const StatusImage &image, const StatusGround &ground);

} // namespace tavrine
