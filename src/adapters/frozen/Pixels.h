#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace tavrine {

/// A picture in memory that belongs to someone else: 32 bits a pixel, red in bits 16 to 23, green in 8 to 15, blue in
/// 0 to 7; the highest bits say nothing. Lines follow one another without a gap.
template <class Pixel>
struct Pixels {
    Pixel *data = nullptr;
    int width = 0;
    int height = 0;

    [[nodiscard]] Pixel *line(int y) const { return data + qsizetype{y} * width; }
    [[nodiscard]] QRect rect() const { return {0, 0, width, height}; }
    [[nodiscard]] bool contains(QPoint place) const {
        return place.x() >= 0 && place.y() >= 0 && place.x() < width && place.y() < height;
    }
    /// Of a place inside, without the highest bits.
    [[nodiscard]] quint32 at(QPoint place) const { return line(place.y())[place.x()] & 0xffffffU; }
    operator Pixels<const Pixel>() const { return {data, width, height}; }
};

using PixelsToPaint = Pixels<quint32>;
using PixelsToRead = Pixels<const quint32>;

/// A colour to paint with, not premultiplied.
struct Rgba {
    quint8 red = 0;
    quint8 green = 0;
    quint8 blue = 0;
    quint8 alpha = 255;
};

[[nodiscard]] constexpr Rgba opaque(quint32 pixel) {
    return {static_cast<quint8>(pixel >> 16), static_cast<quint8>(pixel >> 8), static_cast<quint8>(pixel), 255};
}

} // namespace tavrine
