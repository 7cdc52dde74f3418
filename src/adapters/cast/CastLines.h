#pragma once

#include <QSize>

#include <cstdint>
#include <optional>

namespace tavrine {

/// Where the lines of a picture lie in its memory, in bytes.
struct CastLines {
    std::uint32_t offset = 0;
    std::int32_t stride = 0;
    bool operator==(const CastLines &) const = default;
};

/// What a compositor says of where a picture lies, if all of it lies within `room`, the bytes that are mapped. A pixel
/// is four bytes.
[[nodiscard]] constexpr std::optional<CastLines> wholeLines(QSize picture, CastLines said, std::int64_t room) {
    const std::int64_t line = std::int64_t{picture.width()} * 4;
    const std::int64_t needed = std::int64_t{said.offset} + std::int64_t{said.stride} * (picture.height() - 1) + line;
    if (picture.isEmpty() || said.stride < line || needed > room)
        return std::nullopt;
    return said;
}

} // namespace tavrine
