#include "programs/recorder/Colors.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tavrine {
namespace {

// BT.709 in parts of 256, with the 219 steps of brightness and the 224 of colour in them. Those of a colour add up to
// nothing, so that grey is grey exactly.
constexpr int lumaOfBlue = 16;
constexpr int lumaOfGreen = 157;
constexpr int lumaOfRed = 47;
constexpr int lumaBase = (16 << 8) + 128;
constexpr int blueOfBlue = 112;
constexpr int blueOfGreen = -86;
constexpr int blueOfRed = -26;
constexpr int redOfBlue = -10;
constexpr int redOfGreen = -102;
constexpr int redOfRed = 112;
constexpr int chromaBase = (128 << 8) + 128;
constexpr std::size_t bytesPerPixel = 4;

/// The rounding of the processor's own average, which both ways share.
constexpr int average(int first, int second) {
    return (first + second + 1) / 2;
}

struct Lines {
    const std::uint8_t *upper;
    const std::uint8_t *lower;
    std::uint8_t *upperLuma;
    std::uint8_t *lowerLuma;
    std::uint8_t *blue;
    std::uint8_t *red;
};

std::uint8_t lumaOf(const std::uint8_t *pixel) {
    return static_cast<std::uint8_t>(
        (lumaOfBlue * pixel[0] + lumaOfGreen * pixel[1] + lumaOfRed * pixel[2] + lumaBase) >> 8);
}

/// Two lines, from the pixel `begin` on.
void convertLines(const Lines &lines, int begin, int end) {
    for (int x = begin; x < end; x += 2) {
        const std::uint8_t *upper = lines.upper + static_cast<std::size_t>(x) * bytesPerPixel;
        const std::uint8_t *lower = lines.lower + static_cast<std::size_t>(x) * bytesPerPixel;
        for (int i = 0; i < 2; ++i) {
            lines.upperLuma[x + i] = lumaOf(upper + static_cast<std::size_t>(i) * bytesPerPixel);
            lines.lowerLuma[x + i] = lumaOf(lower + static_cast<std::size_t>(i) * bytesPerPixel);
        }
        int mean[3];
        for (std::size_t channel = 0; channel < 3; ++channel)
            mean[channel] = average(average(upper[channel], lower[channel]),
                                    average(upper[channel + bytesPerPixel], lower[channel + bytesPerPixel]));
        lines.blue[x / 2] = static_cast<std::uint8_t>(
            (blueOfBlue * mean[0] + blueOfGreen * mean[1] + blueOfRed * mean[2] + chromaBase) >> 8);
        lines.red[x / 2] = static_cast<std::uint8_t>(
            (redOfBlue * mean[0] + redOfGreen * mean[1] + redOfRed * mean[2] + chromaBase) >> 8);
    }
}

template <class Convert>
void convertPart(const ScreenPixels &from, const FilmPixels &to, const Part &part, Convert convert) {
    for (int y = part.top; y < part.top + part.height; y += 2) {
        const auto line = static_cast<std::size_t>(y);
        const std::uint8_t *upper = from.bytes + line * from.bytesPerLine;
        std::uint8_t *luma = to.luma + line * to.lumaPerLine;
        convert(Lines{.upper = upper,
                      .lower = upper + from.bytesPerLine,
                      .upperLuma = luma,
                      .lowerLuma = luma + to.lumaPerLine,
                      .blue = to.blue + line / 2 * to.chromaPerLine,
                      .red = to.red + line / 2 * to.chromaPerLine},
                part.left, part.left + part.width);
    }
}

} // namespace

void convertPlainly(const ScreenPixels &from, const FilmPixels &to, const Part &part) {
    convertPart(from, to, part, convertLines);
}

#if defined(__x86_64__)
namespace {

#define TAVRINE_AVX2 __attribute__((target("avx2")))
constexpr int pixelsAtOnce = 32;

TAVRINE_AVX2 inline __m256i load(const std::uint8_t *bytes) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes));
}

/// Four bytes for each pixel.
TAVRINE_AVX2 inline __m256i factors(int first, int second, int third, int fourth) {
    const auto byte = [](int value) { return static_cast<std::uint32_t>(static_cast<std::uint8_t>(value)); };
    return _mm256_set1_epi32(
        static_cast<int>(byte(first) | byte(second) << 8 | byte(third) << 16 | byte(fourth) << 24));
}

/// Adding and packing work within each half of a register: this puts groups of four back into their order.
TAVRINE_AVX2 inline __m256i inOrder(__m256i bytes) {
    return _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}

/// The brightness of sixteen pixels, in words. Green has more than a signed byte, so it comes in two parts, the second
/// in place of the byte without a meaning.
TAVRINE_AVX2 inline __m256i lumaOfSixteen(__m256i first, __m256i second) {
    constexpr int half = lumaOfGreen / 2;
    const __m256i order = _mm256_setr_epi8(0, 1, 2, 1, 4, 5, 6, 5, 8, 9, 10, 9, 12, 13, 14, 13, 0, 1, 2, 1, 4, 5, 6, 5,
                                           8, 9, 10, 9, 12, 13, 14, 13);
    const __m256i with = factors(lumaOfBlue, lumaOfGreen - half, lumaOfRed, half);
    const __m256i sum = _mm256_hadd_epi16(_mm256_maddubs_epi16(_mm256_shuffle_epi8(first, order), with),
                                          _mm256_maddubs_epi16(_mm256_shuffle_epi8(second, order), with));
    return _mm256_srli_epi16(_mm256_add_epi16(sum, _mm256_set1_epi16(lumaBase)), 8);
}

TAVRINE_AVX2 inline void lumaOfLine(const std::uint8_t *from, std::uint8_t *to) {
    const __m256i low = lumaOfSixteen(load(from), load(from + 32));
    const __m256i high = lumaOfSixteen(load(from + 64), load(from + 96));
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(to), inOrder(_mm256_packus_epi16(low, high)));
}

/// The means of eight squares, in the order 0 1 4 5 2 3 6 7.
TAVRINE_AVX2 inline __m256i meansOfEight(const std::uint8_t *upper, const std::uint8_t *lower) {
    const __m256 first = _mm256_castsi256_ps(_mm256_avg_epu8(load(upper), load(lower)));
    const __m256 second = _mm256_castsi256_ps(_mm256_avg_epu8(load(upper + 32), load(lower + 32)));
    return _mm256_avg_epu8(_mm256_castps_si256(_mm256_shuffle_ps(first, second, 0x88)),
                           _mm256_castps_si256(_mm256_shuffle_ps(first, second, 0xdd)));
}

TAVRINE_AVX2 inline void chromaOf(__m256i first, __m256i second, __m256i with, std::uint8_t *to) {
    const __m256i sum = _mm256_hadd_epi16(_mm256_maddubs_epi16(first, with), _mm256_maddubs_epi16(second, with));
    // Below zero and above it; the base brings it into what a word holds without a sign.
    const __m256i words =
        _mm256_srli_epi16(_mm256_add_epi16(sum, _mm256_set1_epi16(static_cast<short>(chromaBase))), 8);
    const __m256i bytes = _mm256_packus_epi16(words, words);
    // Each half has its own eight, of both sources and in the order of the means.
    const __m128i low = _mm256_castsi256_si128(bytes);
    const __m128i high = _mm256_extracti128_si256(bytes, 1);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to), _mm_unpacklo_epi16(low, high));
}

TAVRINE_AVX2 void convertLinesWithAvx2(const Lines &lines, int begin, int end) {
    const __m256i toBlue = factors(blueOfBlue, blueOfGreen, blueOfRed, 0);
    const __m256i toRed = factors(redOfBlue, redOfGreen, redOfRed, 0);
    int x = begin;
    for (; x + pixelsAtOnce <= end; x += pixelsAtOnce) {
        const std::uint8_t *upper = lines.upper + static_cast<std::size_t>(x) * bytesPerPixel;
        const std::uint8_t *lower = lines.lower + static_cast<std::size_t>(x) * bytesPerPixel;
        lumaOfLine(upper, lines.upperLuma + x);
        lumaOfLine(lower, lines.lowerLuma + x);
        const __m256i first = meansOfEight(upper, lower);
        const __m256i second = meansOfEight(upper + 64, lower + 64);
        chromaOf(first, second, toBlue, lines.blue + x / 2);
        chromaOf(first, second, toRed, lines.red + x / 2);
    }
    convertLines(lines, x, end);
}

} // namespace

bool hasAvx2() {
    static const bool has = __builtin_cpu_supports("avx2");
    return has;
}

void convertWithAvx2(const ScreenPixels &from, const FilmPixels &to, const Part &part) {
    convertPart(from, to, part, convertLinesWithAvx2);
}
#else
bool hasAvx2() {
    return false;
}

void convertWithAvx2(const ScreenPixels &from, const FilmPixels &to, const Part &part) {
    convertPlainly(from, to, part);
}
#endif

void convertColors(const ScreenPixels &from, const FilmPixels &to, const Part &part) {
    (hasAvx2() ? convertWithAvx2 : convertPlainly)(from, to, part);
}

} // namespace tavrine
