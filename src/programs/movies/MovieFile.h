#pragma once

#include "programs/movies/OpenFile.h"

#include <array>
#include <optional>
#include <string>

extern "C" {
#include <libavformat/avformat.h>
}

namespace tavrine {

/// A movie that is read. One thread.
class MovieFile {
public:
    MovieFile(int descriptor, std::function<void()> isUsed);
    ~MovieFile();
    MovieFile(const MovieFile &) = delete;
    MovieFile &operator=(const MovieFile &) = delete;

    /// Why it is none, if so.
    [[nodiscard]] std::optional<std::string> open();

    [[nodiscard]] AVFormatContext *context() const { return m_context; }
    /// The first track of pictures that is no cover; null without one.
    [[nodiscard]] AVStream *video() const;
    [[nodiscard]] bool hasAudio() const;

private:
    OpenFile m_file;
    AVFormatContext *m_context = nullptr;
};

/// How a picture lies in the file: its pixels' shape and its turn, both for display.
struct Upright {
    int width = 0; ///< of what is displayed, in square pixels, as it lies in the file
    int height = 0;
    std::array<int, 4> turn{1, 0, 0, 1}; ///< as `movieProtocol::Report` has it

    [[nodiscard]] bool isCrossed() const { return turn[0] == 0; }
};
/// None where the track says nothing of its size, or what is too large.
[[nodiscard]] std::optional<Upright> uprightOf(AVFormatContext *context, AVStream *video);

[[nodiscard]] std::string wordsOf(int error);

} // namespace tavrine
