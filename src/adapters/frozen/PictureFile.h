#pragma once

#include "adapters/frozen/Pixels.h"

#include <array>
#include <optional>
#include <string>

namespace tavrine {

/// How a file begins that hands a picture of all screens over; its pixels follow as `Pixels` has them. Of one machine
/// and one moment: as its numbers lie in memory.
struct PictureFileHead {
    static constexpr std::array<char, 8> rightMark{'T', 'a', 'v', 'P', 'i', 'c', 't', '1'};

    std::array<char, 8> mark = rightMark;
    qint32 width = 0;
    qint32 height = 0;
    qint32 pointerX = 0; ///< where the pointer was
    qint32 pointerY = 0;
};

/// Reads such a file into a picture of the same size. None when it is no such file, has another size or is cut short;
/// otherwise where the pointer was.
[[nodiscard]] std::optional<QPoint> readPictureFile(const std::string &path, PixelsToPaint into);

} // namespace tavrine
