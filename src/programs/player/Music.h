#pragma once

#include <functional>
#include <optional>
#include <string>

#include <mpv/client.h>

namespace tavrine {

/// One sound that is played over and over, by libmpv. Made in a process that is locked in already: whatever threads it
/// starts are so, too. One thread; the library's own are behind it.
class Music {
public:
    struct Handlers {
        std::function<void()> ready; ///< decoding has begun, and the way to the output is open
        std::function<void()> ended; ///< after the last loop; without a play it is a failure
        std::function<void(bool isOutputToBlame, const std::string &words)> failed;
        std::function<void()> wentOn; ///< in answer to `look`, when the sound is further than at the last one
    };

    /// `wake` is called on any thread when `work` has something to do.
    Music(Handlers handlers, void (*wake)(void *), void *data);

    /// Opens the sound behind a descriptor and holds it at its beginning. Why the library does not run, otherwise.
    [[nodiscard]] std::optional<std::string> open(int descriptor);
    /// -1 plays for ever. The seam of a loop is as the file has it: not a sample more or less.
    void play(int loops);
    void look();
    void work();

private:
    void handle(const mpv_event &event);
    void end(const mpv_event_end_file &end);

    Handlers m_handlers;
    void (*m_wake)(void *);
    void *m_data;
    mpv_handle *m_mpv = nullptr; // never destroyed: the process ends, and the library would take its time
    int m_error = 0;
    bool m_isReady = false;
    bool m_isPlaying = false;
    bool m_isEndless = false;
    double m_position = -1;
};

} // namespace tavrine
