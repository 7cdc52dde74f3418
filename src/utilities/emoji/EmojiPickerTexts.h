#pragma once

namespace tavrine {

/// What the emoji picker reads, and its size in points.
namespace emojiPickerTexts {
inline constexpr auto placeholder = "Search Emoji & Symbols";
inline constexpr auto empty = "No emojis found";
inline constexpr auto emptySymbol = "magnifyingglass";

inline constexpr auto navigate = "Navigate";
inline constexpr auto navigateSymbol = "arrow.up.arrow.down";
inline constexpr auto copy = "Copy";
inline constexpr auto copySymbol = "return";
inline constexpr auto category = "\u2318\u2190 \u2318\u2192 Category";
/// Ctrl is Command in our windows, but for a field with text, where Ctrl with an arrow moves by words.
inline constexpr auto categoryBesideText = "Super+\u2190 Super+\u2192 Category";
inline constexpr auto details = "Show Details \u21B5 | Actions \u2318";

inline constexpr int width = 600;
inline constexpr int height = 460;
} // namespace emojiPickerTexts

} // namespace tavrine
