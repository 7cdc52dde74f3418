#pragma once

#include <cstdint>

namespace tavrine {

/// This process from its first to its last line, when it shows the movie that it was given open in `window`.
[[noreturn]] void showMovie(std::uint32_t window);

} // namespace tavrine
