#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tavrine::playerProtocol {

/// With it the program does nothing but start, which reads its libraries.
inline constexpr auto readAheadArgument = "--read-ahead";
/// With it the program shows a movie; without arguments it plays a sound.
inline constexpr auto movieArgument = "--movie";

/// What the resident program and TavrinePlayer tell each other: lines on the player's standard input and output, the
/// sound or the movie as an open file, and a movie's pictures in shared memory. Either side checks what it gets.
/// Without Qt.

inline constexpr int mediaFile = 3;   ///< the descriptor of the sound or movie, open for reading, in the player
inline constexpr int pictureFile = 4; ///< of the memory for one picture of a movie: `pictureBytes`, which stay so many

/// A picture is that long at most in either direction: a preview is smaller on any screen.
inline constexpr int longestEdge = 2048;
/// Of a row: libmpv is quicker with rows that begin at every 64th byte.
[[nodiscard]] constexpr int pixelsInRow(int width) {
    return (width + 15) / 16 * 16;
}
/// Each pixel has its blue, green and red in turn, and a byte that means nothing.
inline constexpr std::size_t bytesOfPixel = 4;
inline constexpr std::size_t pictureBytes = bytesOfPixel * longestEdge * longestEdge;

/// Of a picture: from 1 to `longestEdge` in either direction.
struct PictureSize {
    int width = 0;
    int height = 0;
    bool operator==(const PictureSize &) const = default;
};

/// While it plays the player says that it is alive as long as the sound goes on, this often; that of a movie says so
/// while it is paused, too. Whoever says nothing for several times as long hangs.
inline constexpr int secondsBetweenSigns = 2;

struct Report {
    enum class Kind {
        ready,          ///< the first of the sound is decoded and the output is open: a play is heard at once; or the
                        ///< first frame of the movie is decoded
        alive,          ///< the sound went on since the last time
        picture,        ///< there is a picture in the memory, which belongs to the program until it asks for the next
        ended,          ///< the last loop is over; the player ends
        outputChanged,  ///< sound goes elsewhere now, or nowhere; the player has gone silent and ends
        contentsFailed, ///< the file holds nothing that can be played; the player ends
        outputFailed,   ///< sound or pictures have nowhere to go; the player ends
    };
    Kind kind;
    std::string words = {}; ///< of a failure
    PictureSize size = {};  ///< of a picture
    bool operator==(const Report &) const = default;
};

/// With its end.
[[nodiscard]] std::string lineOf(const Report &report);
/// None for anything that a player could not have meant. The line comes without its end.
[[nodiscard]] std::optional<Report> reportIn(std::string_view line);

/// The one command for a sound: to play, and then `loops` times more; -1 is for ever.
[[nodiscard]] std::string playLine(int loops);
[[nodiscard]] std::optional<int> loopsIn(std::string_view line);

/// The commands for a movie, which is paused and heard at first. The first picture is made without `next`.
enum class MovieCommand { play, pause, mute, unmute, next };
[[nodiscard]] std::string lineOf(MovieCommand command);
[[nodiscard]] std::optional<MovieCommand> movieCommandIn(std::string_view line);

/// And how large its pictures are to be from now on.
[[nodiscard]] std::string sizeLine(PictureSize size);
[[nodiscard]] std::optional<PictureSize> sizeIn(std::string_view line);

} // namespace tavrine::playerProtocol
