#include "programs/screencapture/OverlayPainter.h"

#include "adapters/frozen/OverlayPaint.h"
#include "adapters/frozen/PixelPainter.h"

#include <algorithm>
#include <thread>
#include <vector>

namespace tavrine {
namespace {

constexpr Rgba crossLight{255, 255, 255, 150};
constexpr Rgba frameLight{255, 255, 255, 255};
constexpr Rgba frameDark{0, 0, 0, 120};
constexpr Rgba pickTint{64, 140, 255, 56};
constexpr Rgba pickFrame{64, 140, 255, 255};

/// A line of `width` around `area`, outside of it.
void frame(PixelPainter &painter, const QRect &area, int width, Rgba colour) {
    const QRect outer = area.adjusted(-width, -width, width, width);
    painter.fill({outer.x(), outer.y(), outer.width(), width}, colour);
    painter.fill({outer.x(), area.bottom() + 1, outer.width(), width}, colour);
    painter.fill({outer.x(), area.y(), width, area.height()}, colour);
    painter.fill({area.right() + 1, area.y(), width, area.height()}, colour);
}

} // namespace

const GlyphFont &OverlayPainter::font(double scale) {
    auto &font = m_fonts[overlayPaint::fontSize(scale)];
    if (!font)
        font = std::make_unique<GlyphFont>(overlayPaint::fontSize(scale));
    return *font;
}

QSize OverlayPainter::labelSize(const std::u32string &text, double scale) {
    return overlayPaint::labelSize(font(scale), text, scale);
}

void OverlayPainter::paint(PixelsToPaint canvas, PixelsToRead picture, const OverlayScene &scene, const QRect &area) {
    PixelPainter painter(canvas, area);
    painter.copyDimmed(picture, area, overlayPaint::dimmedKeep);
    if (scene.clear) {
        painter.copy(picture, *scene.clear);
        const int line = scene.frameWidth() / 2;
        if (scene.isPicked) {
            painter.fill(*scene.clear, pickTint);
            // Within, so that a window that fills the monitor has a frame as well.
            const int inside = 2 * line;
            frame(painter, scene.clear->adjusted(inside, inside, -inside, -inside), inside, pickFrame);
        } else {
            frame(painter, *scene.clear, line, frameLight);
            frame(painter, scene.clear->adjusted(-line, -line, line, line), line, frameDark);
        }
    }
    for (const QRect &line : scene.crossLines)
        painter.fill(line, crossLight);
    if (scene.magnifier)
        overlayPaint::magnifier(painter, *scene.magnifier, picture, scene.scale);
    for (const OverlayScene::Label &label : scene.labels)
        overlayPaint::label(painter, label.area, font(scene.scale), label.text, scene.scale);
}

void OverlayPainter::paintDimmed(PixelsToPaint canvas, PixelsToRead picture) {
    const int parts = std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, 4);
    const auto paintPart = [&](int part) {
        const int top = canvas.height * part / parts;
        const QRect area(0, top, canvas.width, canvas.height * (part + 1) / parts - top);
        PixelPainter(canvas, area).copyDimmed(picture, area, overlayPaint::dimmedKeep);
    };
    std::vector<std::thread> others;
    for (int part = 1; part < parts; ++part)
        others.emplace_back(paintPart, part);
    paintPart(0);
    for (std::thread &other : others)
        other.join();
}

} // namespace tavrine
