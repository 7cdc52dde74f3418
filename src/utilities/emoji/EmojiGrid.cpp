#include "utilities/emoji/EmojiGrid.h"

#include <algorithm>

namespace tavrine::emojiGrid {
namespace {

enum class Step { previous, next };

/// Where one lands when stepping into a section of `count` items, which is above 0.
size_t landing(EmojiMove move, size_t count, size_t column) {
    const size_t last = count - 1;
    switch (move) {
    case EmojiMove::left:
        return last;
    case EmojiMove::right:
        return 0;
    case EmojiMove::up:
        return std::min(last / columns * columns + column, last);
    case EmojiMove::down:
        return std::min(column, last);
    }
    return 0;
}

/// The index within the same section, or none when the move leaves it.
std::optional<size_t> withinSection(EmojiMove move, size_t index, size_t count) {
    switch (move) {
    case EmojiMove::left:
        return index > 0 ? std::optional(index - 1) : std::nullopt;
    case EmojiMove::right:
        return index + 1 < count ? std::optional(index + 1) : std::nullopt;
    case EmojiMove::up:
        return index >= columns ? std::optional(index - columns) : std::nullopt;
    case EmojiMove::down:
        return index + columns < count ? std::optional(index + columns) : std::nullopt;
    }
    return std::nullopt;
}

} // namespace

std::optional<Position> find(const std::vector<EmojiSection> &sections, const QString &emoji) {
    for (size_t section = 0; section < sections.size(); ++section) {
        const auto &items = sections[section].items;
        const auto found = std::ranges::find(items, emoji, &EmojiItem::emoji);
        if (found != items.end())
            return Position{section, static_cast<size_t>(found - items.begin())};
    }
    return std::nullopt;
}

std::optional<QString> first(const std::vector<EmojiSection> &sections) {
    if (sections.empty() || sections.front().items.empty())
        return std::nullopt;
    return sections.front().items.front()->emoji;
}

std::optional<QString> moved(const std::vector<EmojiSection> &sections, const std::optional<QString> &selected,
                             EmojiMove move) {
    const auto position = selected ? find(sections, *selected) : std::nullopt;
    if (!position)
        return first(sections);
    const auto &items = sections[position->section].items;
    if (const auto index = withinSection(move, position->item, items.size()))
        return items[*index]->emoji;

    const Step step = move == EmojiMove::left || move == EmojiMove::up ? Step::previous : Step::next;
    if (step == Step::previous ? position->section == 0 : position->section + 1 == sections.size())
        return selected;
    const auto &neighbour = sections[step == Step::previous ? position->section - 1 : position->section + 1].items;
    if (neighbour.empty())
        return std::nullopt;
    return neighbour[landing(move, neighbour.size(), position->item % columns)]->emoji;
}

} // namespace tavrine::emojiGrid
