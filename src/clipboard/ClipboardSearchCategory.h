#pragma once

#include <QString>

#include <array>

namespace tavrine {

/// The strip of categories in the search panel.
enum class ClipboardSearchCategory { all, mySave, text, images, links, snippets };

struct ClipboardSearchCategoryRow {
    ClipboardSearchCategory category;
    QLatin1String rawValue; ///< shown on the strip
};

/// In the order of the strip.
inline constexpr std::array clipboardSearchCategories{
    ClipboardSearchCategoryRow{ClipboardSearchCategory::all, QLatin1String("All")},
    ClipboardSearchCategoryRow{ClipboardSearchCategory::mySave, QLatin1String("My Saved")},
    ClipboardSearchCategoryRow{ClipboardSearchCategory::text, QLatin1String("Text")},
    ClipboardSearchCategoryRow{ClipboardSearchCategory::images, QLatin1String("Images")},
    ClipboardSearchCategoryRow{ClipboardSearchCategory::links, QLatin1String("Links")},
    ClipboardSearchCategoryRow{ClipboardSearchCategory::snippets, QLatin1String("Snippets")},
};

[[nodiscard]] QString rawValue(ClipboardSearchCategory category);

/// The neighbour by `delta`, which is -1 or +1, round both ends.
[[nodiscard]] ClipboardSearchCategory movedCategory(ClipboardSearchCategory category, int delta);

} // namespace tavrine
