#pragma once

#include <QByteArray>

#include <array>
#include <optional>

namespace tavrine {

class JpegSource;

/// The compression factors that are tried for a stored image, best first: each 0.15 below the one before, until one is
/// at or below 0.2. Written out, since the subtraction in floating point is exact for none of them.
inline constexpr std::array jpegFactors{0.82, 0.67, 0.52, 0.37, 0.22, 0.07};

/// A stored image should not have more bytes than this.
inline constexpr qsizetype jpegSizeLimit = 200'000;

/// Encodes with the first factor that keeps to the limit; the last factor stands whatever its size. None when any
/// encoding gave nothing.
[[nodiscard]] std::optional<QByteArray> encodeForStorage(JpegSource &source);

} // namespace tavrine
