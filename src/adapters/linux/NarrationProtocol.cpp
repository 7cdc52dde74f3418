#include "adapters/linux/NarrationProtocol.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace tavrine {
namespace {

constexpr std::pair<NarratedPlace::Kind, std::string_view> kinds[] = {
    {NarratedPlace::Kind::screen, "screen"},
    {NarratedPlace::Kind::cross, "cross"},
    {NarratedPlace::Kind::area, "area"},
    {NarratedPlace::Kind::window, "window"},
};

/// Takes the number from the front of `text`, with the one space before it.
bool take(std::string_view &text, int &number) {
    if (!text.starts_with(' '))
        return false;
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + text.size(), number);
    if (error != std::errc() || number < -NarratedPlace::longest || number > NarratedPlace::longest)
        return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

} // namespace

std::string NarratedPlace::line() const {
    const auto *const kindRow = std::ranges::find(kinds, kind, &std::pair<Kind, std::string_view>::first);
    std::string line(kindRow->second);
    for (const int number : area)
        line += ' ' + std::to_string(number);
    for (const int number : picture)
        line += ' ' + std::to_string(number);
    return line + '\n';
}

std::optional<NarratedPlace> NarratedPlace::parse(std::string_view line) {
    const std::string_view word = line.substr(0, line.find(' '));
    const auto *const kindRow = std::ranges::find(kinds, word, &std::pair<Kind, std::string_view>::second);
    if (kindRow == std::end(kinds))
        return std::nullopt;
    line.remove_prefix(word.size());
    NarratedPlace place{.kind = kindRow->first};
    const auto takesNext = [&line](int &number) { return take(line, number); };
    const bool isWhole =
        std::ranges::all_of(place.area, takesNext) && std::ranges::all_of(place.picture, takesNext) && line.empty();
    const bool hasSize = place.area[2] > 0 && place.area[3] > 0 && place.picture[0] > 0 && place.picture[1] > 0;
    return isWhole && hasSize ? std::optional(place) : std::nullopt;
}

} // namespace tavrine
