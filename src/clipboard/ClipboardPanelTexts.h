#pragma once

#include <array>

namespace tavrine {

/// What the clipboard search panel reads beside its rows, and its sizes in points.
namespace clipboardSearchTexts {
inline constexpr auto placeholder = "Search clipboard & snippets...";
inline constexpr auto clearSymbol = "xmark.circle.fill";
inline constexpr auto addToolTip = "Add item to My Saved";
inline constexpr auto addSymbol = "plus.circle.fill";
inline constexpr auto pinSymbol = "pin.fill";
inline constexpr auto deleteToolTip = "Delete item";
inline constexpr auto deleteSymbol = "trash";

struct Hint {
    const char *symbol; ///< null for a text alone
    const char *text;
};
inline constexpr std::array footer{Hint{"arrow.up.arrow.down", "Navigate"}, Hint{nullptr, "Paste"},
                                   Hint{nullptr, "esc Close"}, Hint{nullptr, "\u2190 \u2192 Category"}};

inline constexpr int width = 680;
inline constexpr int height = 500;
inline constexpr int cornerRadius = 18;
inline constexpr int rowHeight = 60;
} // namespace clipboardSearchTexts

/// The same of the classic panel.
namespace classicPanelTexts {
inline constexpr auto title = "Classic Clipboard";
inline constexpr auto placeholder = "Search history\u2026";
inline constexpr auto clearSymbol = "xmark.circle.fill";
inline constexpr auto settingsSymbol = "gearshape.fill";
inline constexpr auto settingsToolTip = "Settings";
inline constexpr auto closeSymbol = "xmark";
inline constexpr auto closeToolTip = "Close";
inline constexpr auto pinSymbol = "pin.fill";
inline constexpr auto savedSymbol = "bookmark";
inline constexpr auto unsaveSymbol = "bookmark.fill";
inline constexpr auto playBadge = "play.fill";
inline constexpr int width = 320;
inline constexpr int height = 450;
inline constexpr int thumbnailSize = 56;
} // namespace classicPanelTexts

} // namespace tavrine
