#include "clipboard/ClipboardSearchCategory.h"

namespace tavrine {

// The table stands in the order of the enumeration.
QString rawValue(ClipboardSearchCategory category) {
    return clipboardSearchCategories.at(static_cast<size_t>(category)).rawValue;
}

ClipboardSearchCategory movedCategory(ClipboardSearchCategory category, int delta) {
    constexpr int count = static_cast<int>(clipboardSearchCategories.size());
    const int index = (static_cast<int>(category) + delta + count) % count;
    return clipboardSearchCategories.at(static_cast<size_t>(index)).category;
}

} // namespace tavrine
