#pragma once

#include <cstdint>

/// What the index and the fragments of a movie call the same thing.
namespace tavrine::movieTracks {

inline constexpr std::uint32_t pictureTrack = 1;
inline constexpr std::uint32_t soundTrack = 2;
inline constexpr std::uint32_t dependsOnOthers = 0x1010000; // and is no key picture
inline constexpr std::uint32_t dependsOnNone = 0x2000000;

} // namespace tavrine::movieTracks
