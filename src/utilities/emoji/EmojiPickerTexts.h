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
/// Ctrl is Command in our windows, but for a field with text, where Ctrl with an arrow moves by words.
inline constexpr auto category = "Ctrl \u2190\u2009\u2192 Category";
inline constexpr auto categoryBesideText = "Super \u2190\u2009\u2192 Category";
inline constexpr auto pin = "Ctrl P Pin";

inline constexpr int width = 600;
inline constexpr int height = 460;
} // namespace emojiPickerTexts

} // namespace tavrine
