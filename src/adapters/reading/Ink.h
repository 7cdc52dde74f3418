#pragma once

namespace tavrine::reading {

// How many shades of 256 darker than the ground. Thin strokes of small fonts are hardly grey, and an underscore has
// nothing else.
inline constexpr int inkOfLetters = 80;
inline constexpr int inkOfStrokes = 30;

} // namespace tavrine::reading
