#pragma once

#include "adapters/frozen/Pixels.h"

#include <cstdint>

namespace tavrine {

/// An output's pixels as a compositor has copied them into memory.
struct CopiedPixels {
    const std::uint8_t *data = nullptr;
    std::uint32_t format = 0; ///< a `wl_shm_format`
    QSize size;               ///< as they lie in memory
    int lineBytes = 0;
    int transform = 0; ///< of the output, a `wl_output_transform`
    bool isUpsideDown = false;

    /// False for a kind of pixels that is not known.
    [[nodiscard]] bool isKnown() const;
    /// True when the memory holds the picture as it is to be seen and as `Pixels` has it.
    [[nodiscard]] bool isPlain() const;
    /// As a person sees it.
    [[nodiscard]] QSize seenSize() const { return transform % 2 ? size.transposed() : size; }

    /// Puts `part` of what is seen to the same place of `target`, moved by `to`.
    void putInto(PixelsToPaint target, QPoint to, const QRect &part) const;

    /// Where a part of the memory is seen.
    [[nodiscard]] QRect seen(const QRect &inMemory) const;

private:
    [[nodiscard]] QPoint inMemory(QPoint seenPlace) const;
};

/// Of what compositors copy.
[[nodiscard]] bool isKnownFormat(std::uint32_t format);

} // namespace tavrine
