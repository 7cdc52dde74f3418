#pragma once

#include <QtGlobal>

#include <bit>

namespace tavrine {

/// A channel of 8 bits at the place and in the width of `mask`.
[[nodiscard]] constexpr quint32 toMask(int value, quint32 mask) {
    if (mask == 0)
        return 0;
    const quint32 highest = mask >> std::countr_zero(mask);
    return static_cast<quint32>((quint64(value) * highest + 127) / 255) << std::countr_zero(mask);
}

/// The channel at `mask`, in 8 bits; full where there is none.
[[nodiscard]] constexpr int fromMask(quint32 pixel, quint32 mask) {
    if (mask == 0)
        return 255;
    const quint32 highest = mask >> std::countr_zero(mask);
    return static_cast<int>((quint64((pixel & mask) >> std::countr_zero(mask)) * 255 + highest / 2) / highest);
}

} // namespace tavrine
