#pragma once

#include <cstddef>
#include <string_view>
#include <utility>

namespace tavrine {

// Byte searches over UTF-8 that LIKE is built from. Any thread.

/// Where in `literal` the two bytes stand that texts contain least often, the rarer one first; the same place twice
/// in a literal of one byte. `literal` must not be empty.
[[nodiscard]] std::pair<std::size_t, std::size_t> rarestBytes(std::string_view literal);

/// Where `literal`, whose ASCII letters are all in lower case, first stands in `text`, whose ASCII letters may have
/// either case; npos when nowhere. `rarest` and `second` are what `rarestBytes` gave. Reads nothing outside `text`.
[[nodiscard]] std::size_t findLiteral(std::string_view text, std::string_view literal, std::size_t rarest,
                                      std::size_t second);

/// True when `text` is UTF-8 in which each character has its one proper spelling.
[[nodiscard]] bool isWellFormedUtf8(std::string_view text);

} // namespace tavrine
