#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrine::playerProtocol {

/// What the resident program and TavrinePlayer tell each other: lines on the player's standard input and output, and
/// the sound as an open file. Either side checks what it gets. Without Qt.

inline constexpr int soundFile = 3; ///< the descriptor of the sound, open for reading, in the player

/// While it plays the player says that it is alive as long as the sound goes on, this often; whoever says nothing for
/// several times as long hangs.
inline constexpr int secondsBetweenSigns = 2;

struct Report {
    enum class Kind {
        ready,          ///< the first of the sound is decoded and the output is open: a play is heard at once
        alive,          ///< the sound went on since the last time
        ended,          ///< the last loop is over; the player ends
        outputChanged,  ///< sound goes elsewhere now, or nowhere; the player has gone silent and ends
        contentsFailed, ///< the file holds no sound that can be played; the player ends
        outputFailed,   ///< sound has nowhere to go; the player ends
    };
    Kind kind;
    std::string words = {}; ///< of a failure
    bool operator==(const Report &) const = default;
};

/// With its end.
[[nodiscard]] std::string lineOf(const Report &report);
/// None for anything that a player could not have meant. The line comes without its end.
[[nodiscard]] std::optional<Report> reportIn(std::string_view line);

/// The one command there is: to play, and then `loops` times more; -1 is for ever.
[[nodiscard]] std::string playLine(int loops);
[[nodiscard]] std::optional<int> loopsIn(std::string_view line);

} // namespace tavrine::playerProtocol
