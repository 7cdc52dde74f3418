#pragma once

#include <QString>

#include <array>
#include <optional>

namespace tavrine {

/// The strip of categories in the emoji picker.
enum class EmojiCategory { all, smileys, animals, food, activity, travel, objects, symbols, flags };

struct EmojiCategoryRow {
    EmojiCategory category;
    QLatin1String rawValue; ///< shown on the strip
    QLatin1String longName; ///< title of its section and the category that rows of the table carry; empty for `all`
};

/// In the order of the strip and of the sections.
inline constexpr std::array emojiCategories{
    EmojiCategoryRow{EmojiCategory::all, QLatin1String("All"), QLatin1String()},
    EmojiCategoryRow{EmojiCategory::smileys, QLatin1String("Smileys"), QLatin1String("Smileys & People")},
    EmojiCategoryRow{EmojiCategory::animals, QLatin1String("Nature"), QLatin1String("Animals & Nature")},
    EmojiCategoryRow{EmojiCategory::food, QLatin1String("Food"), QLatin1String("Food & Drink")},
    EmojiCategoryRow{EmojiCategory::activity, QLatin1String("Activity"), QLatin1String("Activity")},
    EmojiCategoryRow{EmojiCategory::travel, QLatin1String("Travel"), QLatin1String("Travel & Places")},
    EmojiCategoryRow{EmojiCategory::objects, QLatin1String("Objects"), QLatin1String("Objects")},
    EmojiCategoryRow{EmojiCategory::symbols, QLatin1String("Symbols"), QLatin1String("Symbols")},
    EmojiCategoryRow{EmojiCategory::flags, QLatin1String("Flags"), QLatin1String("Flags")},
};

[[nodiscard]] QString rawValue(EmojiCategory category);
[[nodiscard]] QString longName(EmojiCategory category);

/// The category whose rows carry `longName`, compared exactly. None for any other text, the empty one included.
[[nodiscard]] std::optional<EmojiCategory> emojiCategoryFromLongName(const QString &longName);

/// The neighbour by `delta`, which is -1 or +1, round both ends.
[[nodiscard]] EmojiCategory movedCategory(EmojiCategory category, int delta);

} // namespace tavrine
