#pragma once

namespace tavrine {

/// What keeps more than this of a screen's edge to itself is no bar of the desktop. Points.
inline constexpr int highestBar = 64;

} // namespace tavrine
