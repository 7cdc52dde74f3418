#pragma once

#include "adapters/frozen/Pixels.h"
#include "base/Descriptor.h"

#include <memory>

namespace tavrine {

/// Memory for one picture that other processes can map by its descriptor, the X server among them. It has no name in
/// the system, and its size is fixed for good, so that nobody who was given it can cut it off under the others.
class FrameMemory {
public:
    /// Null when there is no memory.
    [[nodiscard]] static std::shared_ptr<FrameMemory> make(QSize size);
    ~FrameMemory();
    FrameMemory(const FrameMemory &) = delete;
    FrameMemory &operator=(const FrameMemory &) = delete;

    [[nodiscard]] int descriptor() const { return m_descriptor.number(); }
    [[nodiscard]] PixelsToPaint pixels() const { return m_pixels; }
    [[nodiscard]] size_t bytes() const { return m_bytes; }

private:
    FrameMemory() = default;

    Descriptor m_descriptor;
    PixelsToPaint m_pixels;
    size_t m_bytes = 0;
};

} // namespace tavrine
