#include "adapters/wayland/text/DconfFile.h"

#include <bit>
#include <cstdint>

namespace tavrine {
namespace {

// The file is a head, which says where its table is, and the table: words that rule keys out, buckets, and the entries.
// Its numbers have their lowest byte first.
constexpr std::string_view signature = "GVariant"; // the other way round on machines with the highest byte first
constexpr std::size_t placeOfTable = 16;
constexpr std::size_t headOfTable = 8;
constexpr std::size_t word = 4;
constexpr std::size_t entrySize = 24;
constexpr std::uint32_t countBits = 0x07ffffff; // those above say how the words are used
constexpr int deepest = 32;                     // no path has that many parts

/// 0 beyond the end.
std::uint64_t numberAt(std::string_view bytes, std::size_t place, std::size_t size) {
    if (place > bytes.size() || bytes.size() - place < size)
        return 0;
    std::uint64_t number = 0;
    for (std::size_t i = size; i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[place + i]);
    return number;
}

std::uint32_t wordAt(std::string_view bytes, std::size_t place) {
    return static_cast<std::uint32_t>(numberAt(bytes, place, word));
}

/// Empty where it is not within the file.
std::string_view part(std::string_view file, std::size_t from, std::size_t to) {
    return from <= to && to <= file.size() ? file.substr(from, to - from) : std::string_view();
}

/// Whether the entry's key and those of the entries above it, one after the other from the root, are `key`.
bool isCalled(std::string_view file, std::string_view entries, std::size_t index, std::string_view key) {
    for (int depth = 0; depth < deepest; ++depth) {
        if (index >= entries.size() / entrySize)
            return index == UINT32_MAX && key.empty();
        const std::size_t entry = index * entrySize;
        const std::size_t from = wordAt(entries, entry + 2 * word);
        const std::string_view own = part(file, from, from + numberAt(entries, entry + 3 * word, 2));
        if (!key.ends_with(own))
            return false;
        key.remove_suffix(own.size());
        index = wordAt(entries, entry + word);
    }
    return false;
}

} // namespace

std::optional<double> numberInDconf(std::string_view file, std::string_view key) {
    constexpr std::string_view kind("\0d", 2); // behind the eight bytes of the number
    if (!file.starts_with(signature))
        return std::nullopt;
    const std::string_view table = part(file, wordAt(file, placeOfTable), wordAt(file, placeOfTable + word));
    const std::size_t before =
        headOfTable + word * (std::size_t{wordAt(table, 0) & countBits} + std::size_t{wordAt(table, word)});
    const std::string_view entries = part(table, before, table.size());
    for (std::size_t index = 0; index < entries.size() / entrySize; ++index) {
        const std::size_t entry = index * entrySize;
        if (entries[entry + 14] != 'v' || !isCalled(file, entries, index, key))
            continue;
        const std::string_view value = part(file, wordAt(entries, entry + 4 * word), wordAt(entries, entry + 5 * word));
        if (value.size() == 8 + kind.size() && value.ends_with(kind))
            return std::bit_cast<double>(numberAt(value, 0, 8));
        return std::nullopt;
    }
    return std::nullopt;
}

} // namespace tavrine
