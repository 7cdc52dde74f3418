#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavrine::playerProtocol {

/// With it the program does nothing but start, which reads its libraries.
inline constexpr auto readAheadArgument = "--read-ahead";

/// What the resident program and TavrinePlayer tell each other: lines on the player's standard input and output, and
/// the sound or the movie as an open file. Without arguments it plays a sound; with a window's number it shows a movie
/// there. Either side checks what it gets. Without Qt.

inline constexpr int mediaFile = 3; ///< the descriptor of the sound or movie, open for reading, in the player

/// While it plays the player says that it is alive as long as the sound goes on, this often; that of a movie says so
/// while it is paused, too. Whoever says nothing for several times as long hangs.
inline constexpr int secondsBetweenSigns = 2;

struct Report {
    enum class Kind {
        ready,          ///< the first of the sound is decoded and the output is open: a play is heard at once; or the
                        ///< first frame of the movie is shown
        alive,          ///< the sound went on since the last time
        ended,          ///< the last loop is over; the player ends
        outputChanged,  ///< sound goes elsewhere now, or nowhere; the player has gone silent and ends
        contentsFailed, ///< the file holds nothing that can be played; the player ends
        outputFailed,   ///< sound or pictures have nowhere to go; the player ends
    };
    Kind kind;
    std::string words = {}; ///< of a failure
    bool operator==(const Report &) const = default;
};

/// With its end.
[[nodiscard]] std::string lineOf(const Report &report);
/// None for anything that a player could not have meant. The line comes without its end.
[[nodiscard]] std::optional<Report> reportIn(std::string_view line);

/// The one command for a sound: to play, and then `loops` times more; -1 is for ever.
[[nodiscard]] std::string playLine(int loops);
[[nodiscard]] std::optional<int> loopsIn(std::string_view line);

/// The commands for a movie, which is paused and heard at first.
enum class MovieCommand { play, pause, mute, unmute };
[[nodiscard]] std::string lineOf(MovieCommand command);
[[nodiscard]] std::optional<MovieCommand> movieCommandIn(std::string_view line);

/// A window's number, as an argument names it: a decimal number of 32 bits that is not 0.
[[nodiscard]] std::optional<std::uint32_t> windowIn(std::string_view argument);

} // namespace tavrine::playerProtocol
