#pragma once

#include <cstdint>

namespace tavrine {

/// Whether the press of a raw event is the one that a window or a grab got, by the server's times of both. The server
/// looks at its clock again for what it gives to windows and grabs, so that theirs is the same or a little later: often
/// a millisecond, more where the server itself had to wait. No two presses of a person are so close to each other.
[[nodiscard]] constexpr bool isSamePress(std::uint32_t raw, std::uint32_t given) {
    constexpr std::uint32_t longestMs = 30;
    return given - raw <= longestMs;
}

} // namespace tavrine
