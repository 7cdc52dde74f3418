#pragma once

#include <cstddef>
#include <cstdint>

namespace tavrine {

/// A picture as screens have it: four bytes a pixel, blue, green, red and one without a meaning.
struct ScreenPixels {
    const std::uint8_t *bytes = nullptr;
    std::size_t bytesPerLine = 0;
};

/// A picture as films have it: brightness for each pixel, and two differences of colour for each square of four.
struct FilmPixels {
    std::uint8_t *luma = nullptr;
    std::uint8_t *blue = nullptr;
    std::uint8_t *red = nullptr;
    std::size_t lumaPerLine = 0;
    std::size_t chromaPerLine = 0;
};

/// A part of a picture; even in all four.
struct Part {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    bool operator==(const Part &) const = default;
};

/// Converts `part` into BT.709 of limited range. The two give the same numbers; the second needs a processor with AVX2.
void convertPlainly(const ScreenPixels &from, const FilmPixels &to, const Part &part);
void convertWithAvx2(const ScreenPixels &from, const FilmPixels &to, const Part &part);
[[nodiscard]] bool hasAvx2();
/// The quicker one that this processor has.
void convertColors(const ScreenPixels &from, const FilmPixels &to, const Part &part);

} // namespace tavrine
