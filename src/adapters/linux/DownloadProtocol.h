#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavrine::downloadProtocol {

/// What TavrineDownloader tells: lines on its standard output, while it writes what it fetches into the file that it
/// was given open. Its arguments are the address, the seconds after which a silent server is given up, the most bytes
/// that may come, and the schemes of addresses that count. It ends when its standard input does. Without Qt.

inline constexpr int file = 3; ///< the descriptor of the file, open for writing, in the downloader

/// Longer than an hour of music in the best of common qualities. No server fills a disk.
inline constexpr std::int64_t mostBytes = std::int64_t(512) * 1024 * 1024;

inline constexpr const char *allSchemes = "all";       ///< http, https and file; a redirect never leads to a file
inline constexpr const char *secureSchemes = "secure"; ///< https

struct Report {
    enum class Kind { progress, done, failed };
    Kind kind;
    std::int64_t written = 0;
    std::int64_t expected = 0; ///< 0 when the server does not say
    std::string words = {};    ///< of a failure
    bool operator==(const Report &) const = default;
};

/// With its end.
[[nodiscard]] std::string lineOf(const Report &report);
/// None for anything that a downloader could not have meant. The line comes without its end.
[[nodiscard]] std::optional<Report> reportIn(std::string_view line);

} // namespace tavrine::downloadProtocol
