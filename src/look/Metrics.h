#pragma once

#include "base/Date.h"

/// The measures that all views share, in points. A point is one pixel at scale 1; the screen's device pixel ratio is
/// the only thing that scales it.
namespace tavrine::look {

/// Distances between and within things: one scale, in steps that the eye tells apart.
namespace space {
inline constexpr int hair = 2;
inline constexpr int tiny = 4;
inline constexpr int small = 8;
inline constexpr int medium = 12;
inline constexpr int large = 16;
inline constexpr int huge = 24;
} // namespace space

namespace radius {
inline constexpr qreal badge = 5;
inline constexpr qreal control = 8;
inline constexpr qreal row = 10;
inline constexpr qreal card = 12;
inline constexpr qreal panel = 18; // the search panel's, and so every panel's
} // namespace radius

namespace height {
inline constexpr int control = 28;
inline constexpr int chip = 28;
inline constexpr int row = 60; // the search panel's rows
inline constexpr int searchField = 56;
inline constexpr int footer = 40;
} // namespace height

namespace symbolsize {
inline constexpr qreal small = 12;
inline constexpr qreal medium = 16;
inline constexpr qreal large = 20;
inline constexpr qreal huge = 48;
} // namespace symbolsize

/// How long things take. Hover and press follow the hand at once and only leave slowly.
namespace duration {
inline constexpr Seconds hover{0.12};
inline constexpr Seconds toggle{0.18};
inline constexpr Seconds scroll{0.2};
} // namespace duration

} // namespace tavrine::look
