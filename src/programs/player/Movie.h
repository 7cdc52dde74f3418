#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <mpv/client.h>

namespace tavrine {

/// One movie that is shown over and over in a window of another program, by libmpv. Made in a process that is locked in
/// already: whatever threads it starts are so, too. One thread; the library's own are behind it.
class Movie {
public:
    struct Handlers {
        std::function<void()> ready; ///< the first frame is shown
        std::function<void(bool isOutputToBlame, const std::string &words)> failed;
        std::function<void()> isAlive; ///< in answer to `look`
    };
    enum class Sound { heard, none };

    /// `wake` is called on any thread when `work` has something to do.
    Movie(Handlers handlers, void (*wake)(void *), void *data);

    /// Opens the movie behind a descriptor and shows its first frame. Why the library does not run, otherwise.
    [[nodiscard]] std::optional<std::string> open(int descriptor, std::uint32_t window, Sound sound);
    void setPaused(bool isPaused);
    void setMuted(bool isMuted);
    void look();
    void work();

private:
    void handle(const mpv_event &event);

    Handlers m_handlers;
    void (*m_wake)(void *);
    void *m_data;
    mpv_handle *m_mpv = nullptr; // never destroyed: the process ends, and the library would take its time
    bool m_isReady = false;
};

} // namespace tavrine
