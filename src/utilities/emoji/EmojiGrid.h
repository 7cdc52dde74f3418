#pragma once

#include "utilities/emoji/EmojiItem.h"

#include <optional>
#include <vector>

namespace tavrine {

/// A titled block of the picker. The items belong to the store.
struct EmojiSection {
    QString title;
    std::vector<const EmojiItem *> items;
    bool operator==(const EmojiSection &) const = default;
};

enum class EmojiMove { left, right, up, down };

/// The picker's grid: sections one below the other, each in rows of eight.
namespace emojiGrid {

inline constexpr size_t columns = 8;

struct Position {
    size_t section = 0;
    size_t item = 0;
    bool operator==(const Position &) const = default;
};

/// The first place at which `emoji` stands. An emoji may stand in several sections.
[[nodiscard]] std::optional<Position> find(const std::vector<EmojiSection> &sections, const QString &emoji);

/// The first item of the first section, or none where there is nothing.
[[nodiscard]] std::optional<QString> first(const std::vector<EmojiSection> &sections);

/// The emoji that is selected after the move; `selected` itself where the move leads nowhere. None after a step into
/// a section without items.
[[nodiscard]] std::optional<QString> moved(const std::vector<EmojiSection> &sections,
                                           const std::optional<QString> &selected, EmojiMove move);

} // namespace emojiGrid
} // namespace tavrine
