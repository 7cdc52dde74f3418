#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What TavrineRecorder and the resident program tell each other, in messages over a socket that keeps them apart. Both
/// are of one build and one machine, so numbers travel as they are. Without Qt.
///
/// First comes a `Start`, then a `Session`, then pictures and sound, then a `Finish`; the end of the socket ends the
/// movie, too. The recorder answers each picture by `taken`, in order, when it has read it, says `writing` each time
/// that it has got on with the end of the movie, and says how it ended.
namespace tavrine::recorderProtocol {

inline constexpr int socket = 0; ///< descriptors, in the recorder
inline constexpr int file = 3;   ///< the movie's, empty and open for writing

inline constexpr std::size_t longestMessage = std::size_t(64) * 1024;
inline constexpr int leastSide = 2;
inline constexpr int mostSide = 16'384;           ///< the encoder's own
inline constexpr std::uint32_t mostBuffers = 64;  ///< numbers of buffers are below
inline constexpr std::size_t mostParts = 256;     ///< of a picture that changed; with more it is sent as a whole one
inline constexpr std::size_t mostSamples = 4'096; ///< of sound in a message
inline constexpr std::int64_t mostNanoseconds = std::int64_t(7) * 24 * 3600 * 1'000'000'000; ///< of a movie

struct Start {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t bitRate = 0;
    std::int32_t frameRate = 0;
    std::int32_t channels = 0; ///< 0 for a movie without sound, and so the next two
    std::int32_t sampleRate = 0;
    std::int32_t soundBitRate = 0;
    bool operator==(const Start &) const = default;
};
struct Session {
    std::int64_t time = 0; ///< nanoseconds of the monotonic clock, as all times
    bool operator==(const Session &) const = default;
};
struct Area {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool operator==(const Area &) const = default;
};
/// A picture in the memory whose descriptor came with this message, or with an earlier one of the same buffer.
struct Picture {
    std::int64_t time = 0;
    std::uint64_t number = 0; ///< of its frame
    std::uint32_t buffer = 0;
    std::int32_t bytesPerLine = 0;
    bool isWhole = false; ///< else `changed` is what differs from the frame with the number before
    std::vector<Area> changed = {};
    bool operator==(const Picture &) const = default;
};
/// Floats, of all channels in turn.
struct Sound {
    std::int64_t time = 0; ///< of the first
    std::vector<float> samples = {};
    bool operator==(const Sound &) const = default;
};
struct Finish {
    std::int64_t time = 0; ///< up to which the last picture is shown
    bool operator==(const Finish &) const = default;
};

enum class Kind : std::uint32_t { start = 1, session, picture, sound, finish };

[[nodiscard]] std::string messageOf(const Start &start);
[[nodiscard]] std::string messageOf(const Session &session);
[[nodiscard]] std::string messageOf(const Picture &picture);
[[nodiscard]] std::string messageOf(std::int64_t time, const float *samples, std::size_t count); ///< sound
[[nodiscard]] std::string messageOf(const Finish &finish);

/// None for a message that is not whole, or that nobody of ours could mean.
[[nodiscard]] std::optional<Kind> kindOf(std::string_view message);
[[nodiscard]] std::optional<Start> startIn(std::string_view message);
[[nodiscard]] std::optional<Session> sessionIn(std::string_view message);
[[nodiscard]] std::optional<Picture> pictureIn(std::string_view message);
/// `channels` is how many there are.
[[nodiscard]] std::optional<Sound> soundIn(std::string_view message, int channels);
[[nodiscard]] std::optional<Finish> finishIn(std::string_view message);

/// From the recorder.
struct Report {
    enum class Kind : std::uint32_t { taken = 1, writing, finished, failed, diskIsFull };
    Kind kind;
    std::string words = {}; ///< of a failure, which a full disk is too
    bool operator==(const Report &) const = default;
};
[[nodiscard]] std::string messageOf(const Report &report);
[[nodiscard]] std::optional<Report> reportIn(std::string_view message);

} // namespace tavrine::recorderProtocol
