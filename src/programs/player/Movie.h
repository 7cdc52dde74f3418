#pragma once

#include "adapters/linux/PlayerProtocol.h"

#include <functional>
#include <optional>
#include <string>

#include <mpv/client.h>
#include <mpv/render.h>

namespace tavrine {

/// One movie that is shown over and over in memory that another program sees, by libmpv. Made in a process that is
/// locked in already: whatever threads it starts are so, too. One thread; the library's own are behind it.
class Movie {
public:
    struct Handlers {
        std::function<void()> ready; ///< the first frame is decoded
        /// There is one in the memory, which stays as it is until `nextPicture`.
        std::function<void(playerProtocol::PictureSize size)> picture;
        std::function<void(bool isOutputToBlame, const std::string &words)> failed;
        std::function<void()> isAlive; ///< in answer to `look`
    };
    enum class Sound { heard, none };

    /// `wake` is called on any thread when `work` has something to do.
    Movie(Handlers handlers, void (*wake)(void *), void *data);

    /// Opens the movie behind a descriptor, and the memory for its pictures behind another, and stands at its first
    /// frame. Why the library does not run, otherwise.
    [[nodiscard]] std::optional<std::string> open(int movie, int memory, Sound sound);
    /// From now on; there are no pictures before.
    void setPictureSize(playerProtocol::PictureSize size);
    /// The memory is ours again.
    void nextPicture();
    void setPaused(bool isPaused);
    void setMuted(bool isMuted);
    void look();
    void work();

private:
    [[nodiscard]] int start(Sound sound);
    void handle(const mpv_event &event);
    void showPicture();

    Handlers m_handlers;
    void (*m_wake)(void *);
    void *m_data;
    mpv_handle *m_mpv = nullptr; // never destroyed: the process ends, and the library would take its time
    mpv_render_context *m_pictures = nullptr;
    void *m_memory = nullptr;
    playerProtocol::PictureSize m_size;
    bool m_hasFrame = false;  ///< there is something to be seen
    bool m_isWaiting = false; ///< what is to be seen has not been shown in this size
    bool m_isMemoryOurs = true;
    bool m_isReady = false;
};

} // namespace tavrine
