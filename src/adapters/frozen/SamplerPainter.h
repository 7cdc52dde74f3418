#pragma once

#include "adapters/frozen/FrozenScreen.h"
#include "adapters/frozen/GlyphFont.h"

#include <memory>

namespace tavrine {

/// Paints a frozen screen as it is, with a magnifier at a pixel and its colour beneath. Owned by who samples.
class SamplerPainter {
public:
    /// The whole canvas, without a magnifier.
    static void paintPicture(FrozenScreen &screen);
    /// Takes the magnifier from where it stands to `pixel`; what of the canvas is to be put again. Nothing when it
    /// stands there already.
    [[nodiscard]] std::vector<QRect> moveTo(FrozenScreen &screen, QPoint pixel);

private:
    std::unique_ptr<GlyphFont> m_font;
    std::optional<QPoint> m_pixel;
    QRect m_painted;
};

/// "#12ABEF", of a pixel without its highest bits.
[[nodiscard]] std::u32string colourValue(quint32 pixel);

} // namespace tavrine
