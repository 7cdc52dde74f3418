#pragma once

#include "adapters/frozen/GlyphFont.h"
#include "adapters/frozen/Pixels.h"
#include "programs/screencapture/OverlayScene.h"

#include <map>
#include <memory>

namespace tavrine {

/// Paints the frozen screen with what stands on it. Owned by the capture; one thread.
class OverlayPainter {
public:
    /// The room of a text on a label. Reads the font at the first call.
    [[nodiscard]] QSize labelSize(const std::u32string &text, double scale);

    /// Paints the area of the canvas anew, the picture beneath included.
    void paint(PixelsToPaint canvas, PixelsToRead picture, const OverlayScene &scene, const QRect &area);

    /// The whole canvas dimmed, on all cores: the first thing that is seen.
    static void paintDimmed(PixelsToPaint canvas, PixelsToRead picture);

private:
    [[nodiscard]] const GlyphFont &font(double scale);

    std::map<int, std::unique_ptr<GlyphFont>> m_fonts; // one for each size in use
};

} // namespace tavrine
