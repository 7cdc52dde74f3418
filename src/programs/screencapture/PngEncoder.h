#pragma once

#include "adapters/frozen/Pixels.h"

#include <functional>
#include <vector>

namespace tavrine {

/// Pieces of a file, in order.
using FilePieces = std::vector<std::vector<quint8>>;

/// A part of a picture as a PNG file, 8 bits for each of red, green and blue. The file tells `scale`, the device pixels
/// for a point, by its pixels per metre: 96 an inch at scale 1.
///
/// The lines are cut into bands that are packed at the same time, on `threads` threads; the bands together are one
/// ordinary stream. `isStopped` is asked between the bands, on any of the threads; when it says yes, or memory runs
/// out, the answer is empty. So it is for an area that is empty or not within the picture.
[[nodiscard]] FilePieces encodePng(PixelsToRead picture, const QRect &area, double scale, int threads,
                                   const std::function<bool()> &isStopped);

} // namespace tavrine
