#pragma once

#include <QRectF>
#include <QSize>

namespace tavrine {

/// The arithmetic of a recording: which pixels, how many, and how many bits for them. Values only.

inline constexpr int recordingFrameRate = 60;
inline constexpr int recordingQueueDepth = 6; ///< slack for the screen while the writer's queue is busy
inline constexpr int bitsPerPixelPerSecond = 6;
inline constexpr int minVideoBitRate = 4'000'000; ///< bit/s
inline constexpr int maxVideoBitRate = 30'000'000;
inline constexpr int minPixelDimension = 2;

/// `area` is in points, relative to a screen of that height, with its origin at the bottom left; the answer is the same
/// rectangle with its origin at the top left, unrounded.
[[nodiscard]] QRectF recordingSourceRect(const QRectF &area, double screenHeight);

/// The pixels of an area on a screen of that scale: rounded, made even by leaving one out, and at least two either way.
[[nodiscard]] QSize recordingPixelSize(QSizeF area, double scale);

/// Bits in a second for pictures of that size.
[[nodiscard]] int recordingBitRate(QSize pixels);

} // namespace tavrine
