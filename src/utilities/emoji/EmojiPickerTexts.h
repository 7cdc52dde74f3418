#pragma once

#include <array>

namespace tavrine {

/// What the emoji picker reads, and its size in points.
namespace emojiPickerTexts {
inline constexpr auto placeholder = "Search Emoji & Symbols";
inline constexpr auto empty = "No emojis found";
inline constexpr auto emptySymbol = "magnifyingglass";

struct Hint {
    const char *symbol; ///< null for a text alone
    const char *text;
};
inline constexpr std::array footer{Hint{"arrow.up.arrow.down", "Navigate"}, Hint{nullptr, "Copy"},
                                   Hint{nullptr, "\u2318\u2190 \u2318\u2192 Category"},
                                   Hint{nullptr, "Show Details \u21B5 | Actions \u2318"}};

inline constexpr int width = 600;
inline constexpr int height = 460;
} // namespace emojiPickerTexts

} // namespace tavrine
