#pragma once

#include "programs/recorder/Colors.h"

#include <cstdint>
#include <vector>

namespace tavrine {

/// The newest picture of a screen, in a film's colours, and which of the encoder's blocks of 16 by 16 pixels differ
/// from the picture before.
class FilmPicture {
public:
    /// Pixels, even.
    FilmPicture(int width, int height);

    void replace(const ScreenPixels &pixels);
    /// `changed` may lie anywhere.
    void update(const ScreenPixels &pixels, const std::vector<Part> &changed);

    [[nodiscard]] const FilmPixels &pixels() const { return m_pixels; }
    /// One for each block, line by line: not zero where the picture is as it was.
    [[nodiscard]] std::vector<std::uint8_t> &constantBlocks() { return m_constant; }

private:
    static constexpr int block = 16;

    int m_width;
    int m_height;
    int m_blocksPerLine;
    std::vector<std::uint8_t> m_memory;
    FilmPixels m_pixels;
    std::vector<std::uint8_t> m_constant;
};

/// What of `part` lies in a picture of this size, rounded outward to even numbers.
[[nodiscard]] Part evenPart(const Part &part, int width, int height);

} // namespace tavrine
