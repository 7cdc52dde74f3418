#include "programs/recorder/FilmPicture.h"

#include <algorithm>

namespace tavrine {
namespace {

constexpr std::size_t alignment = 32;

std::size_t rounded(int pixels) {
    return (static_cast<std::size_t>(pixels) + alignment - 1) / alignment * alignment;
}

/// X264_MBINFO_CONSTANT; the encoder's own source checks it.
constexpr std::uint8_t constant = 1;

struct Span {
    int begin;
    int end;
};

/// In sums that no number can leave.
Span evenSpan(std::int64_t start, std::int64_t length, int most) {
    const std::int64_t begin = std::clamp<std::int64_t>(start, 0, most);
    const std::int64_t end = std::clamp<std::int64_t>(start + std::max<std::int64_t>(length, 0), begin, most);
    if (begin == end)
        return {0, 0};
    return {static_cast<int>(begin / 2 * 2), static_cast<int>((end + 1) / 2 * 2)};
}

} // namespace

Part evenPart(const Part &part, int width, int height) {
    const Span across = evenSpan(part.left, part.width, width);
    const Span down = evenSpan(part.top, part.height, height);
    return {across.begin, down.begin, across.end - across.begin, down.end - down.begin};
}

FilmPicture::FilmPicture(int width, int height)
    : m_width(width), m_height(height), m_blocksPerLine((width + block - 1) / block) {
    const auto lines = static_cast<std::size_t>(height);
    m_pixels.lumaPerLine = rounded(width);
    m_pixels.chromaPerLine = rounded(width / 2);
    m_memory.resize(m_pixels.lumaPerLine * lines + m_pixels.chromaPerLine * lines);
    m_pixels.luma = m_memory.data();
    m_pixels.blue = m_pixels.luma + m_pixels.lumaPerLine * lines;
    m_pixels.red = m_pixels.blue + m_pixels.chromaPerLine * (lines / 2);
    m_constant.resize(static_cast<std::size_t>(m_blocksPerLine) * ((lines + block - 1) / block));
}

void FilmPicture::replace(const ScreenPixels &pixels) {
    convertColors(pixels, m_pixels, {0, 0, m_width, m_height});
    std::fill(m_constant.begin(), m_constant.end(), std::uint8_t(0));
}

void FilmPicture::update(const ScreenPixels &pixels, const std::vector<Part> &changed) {
    std::fill(m_constant.begin(), m_constant.end(), constant);
    for (const Part &one : changed) {
        const Part part = evenPart(one, m_width, m_height);
        if (part.width == 0 || part.height == 0)
            continue;
        convertColors(pixels, m_pixels, part);
        for (int y = part.top / block; y <= (part.top + part.height - 1) / block; ++y) {
            const auto line = m_constant.begin() + std::ptrdiff_t(y) * m_blocksPerLine;
            std::fill(line + part.left / block, line + (part.left + part.width - 1) / block + 1, std::uint8_t(0));
        }
    }
}

} // namespace tavrine
