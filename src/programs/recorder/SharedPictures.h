#pragma once

#include "base/Descriptor.h"
#include "programs/recorder/Colors.h"

#include <map>
#include <optional>

namespace tavrine {

/// The buffers of pictures that another process fills, seen for reading.
class SharedPictures {
public:
    SharedPictures() = default;
    ~SharedPictures();
    SharedPictures(const SharedPictures &) = delete;
    SharedPictures &operator=(const SharedPictures &) = delete;

    /// The memory of `buffer` from now on; false when it is no memory.
    [[nodiscard]] bool map(std::uint32_t buffer, const Descriptor &memory);
    /// A picture in it; none when there is none of this size.
    [[nodiscard]] std::optional<ScreenPixels> pixels(std::uint32_t buffer, int width, int height,
                                                     int bytesPerLine) const;

private:
    struct Memory {
        void *address;
        std::size_t length;
    };
    void unmap(std::uint32_t buffer);

    std::map<std::uint32_t, Memory> m_memories;
};

} // namespace tavrine
