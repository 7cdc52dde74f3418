#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavrine::movieProtocol {

/// What the resident program and TavrineMovies tell each other: a job as arguments, the movie and what is made of it as
/// open files, and lines on standard output. Either side checks what it gets. Without Qt.

inline constexpr int movieFile = 3;  ///< the descriptor of the movie, open for reading
inline constexpr int resultFile = 4; ///< of the frame's pixels or of the copy, open for reading and writing

enum class Job {
    facts, ///< tell what the movie says of itself
    frame, ///< write the frame at time 0 as rows of pixels of four bytes: blue, green, red, one that says nothing
    copy,  ///< write a movie with the first video track alone
};
/// As they are written as the first argument.
[[nodiscard]] const char *wordOf(Job job);
[[nodiscard]] std::optional<Job> jobIn(std::string_view word);

inline constexpr int mostPixels = 16'384; ///< of an edge; movies have fewer

/// The second argument of `Job::frame`.
[[nodiscard]] std::optional<int> longestEdgeIn(std::string_view argument);

/// A job that takes its time says so this often; whoever says nothing for several times as long hangs.
inline constexpr int secondsBetweenSigns = 1;

struct Report {
    enum class Kind { facts, frame, copied, alive, failed };
    Kind kind = Kind::alive;
    int width = 0; ///< of the upright picture, or of the frame as it lies in the file; 0 without a picture
    int height = 0;
    bool hasAudio = false;
    std::int64_t milliseconds = 0; ///< of the whole movie; 0 when nobody knows
    /// Of a frame: how its x and its y lead to those of the upright picture. (x, y) goes to
    /// (x · turn[0] + y · turn[2], x · turn[1] + y · turn[3]), which are turns by right angles and mirrors.
    std::array<int, 4> turn{1, 0, 0, 1};
    std::string words = {}; ///< of a failure
    bool operator==(const Report &) const = default;
};

/// With its end.
[[nodiscard]] std::string lineOf(const Report &report);
/// None for anything that TavrineMovies could not have meant. The line comes without its end.
[[nodiscard]] std::optional<Report> reportIn(std::string_view line);

} // namespace tavrine::movieProtocol
