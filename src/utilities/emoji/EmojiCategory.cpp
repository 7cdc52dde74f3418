#include "utilities/emoji/EmojiCategory.h"

#include <algorithm>

namespace tavrine {
namespace {

// The table stands in the order of the enumeration.
const EmojiCategoryRow &rowOf(EmojiCategory category) {
    return emojiCategories.at(static_cast<size_t>(category));
}

} // namespace

QString rawValue(EmojiCategory category) {
    return rowOf(category).rawValue;
}

QString longName(EmojiCategory category) {
    return rowOf(category).longName;
}

std::optional<EmojiCategory> emojiCategoryFromLongName(const QString &longName) {
    const auto *const found = std::ranges::find_if(emojiCategories, [&](const EmojiCategoryRow &row) {
        return !row.longName.isEmpty() && row.longName == longName;
    });
    return found == emojiCategories.end() ? std::nullopt : std::optional(found->category);
}

EmojiCategory movedCategory(EmojiCategory category, int delta) {
    constexpr int count = static_cast<int>(emojiCategories.size());
    return emojiCategories.at(static_cast<size_t>((static_cast<int>(category) + delta + count) % count)).category;
}

} // namespace tavrine
