#include "programs/player/ShownMovie.h"

#include "adapters/linux/PlayerProtocol.h"
#include "programs/player/Commands.h"
#include "programs/player/Doors.h"
#include "programs/player/Movie.h"
#include "programs/player/Reports.h"
#include "programs/player/SoundServer.h"
#include "programs/player/Walls.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string_view>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace tavrine {

using playerProtocol::MovieCommand;
using playerProtocol::Report;

namespace {

/// A picture is wanted at once; a server that takes longer is none.
constexpr std::chrono::milliseconds longestWaitForServer{200};

/// The socket in a sound server's address ("unix:/run/…" or the bare path, with a machine's name in braces before it).
/// Empty for a server elsewhere.
std::string socketIn(std::string_view address) {
    if (address.starts_with('{'))
        address.remove_prefix(std::min(address.size(), address.find('}') + 1));
    if (constexpr std::string_view kind = "unix:"; address.starts_with(kind))
        address.remove_prefix(kind.size());
    return address.starts_with('/') ? std::string(address) : std::string();
}

/// The way to be heard, if there is one.
Movie::Sound openSound() {
    pa_mainloop *const loop = pa_mainloop_new();
    std::string socket;
    {
        SoundServer server(loop);
        if (!server.connect(longestWaitForServer, SoundServer::Missing::left))
            socket = socketIn(server.address());
    }
    pa_mainloop_free(loop);
    if (socket.empty() || Doors::open(socket))
        return Movie::Sound::none;
    // The library finds the server by this, for there are no files to look into any more.
    setenv("PULSE_SERVER", ("unix:" + socket).c_str(), 1);
    return Movie::Sound::heard;
}

/// The process between its first and its last line. One thread.
class MovieProcess {
public:
    [[noreturn]] void run() {
        const Movie::Sound sound = openSound();
        Doors::close();
        beginToSign();
        if (const LockDownError error = lockMoviePlayer())
            leave({Report::Kind::outputFailed, "the player is not locked in: " + *error});
        if (const auto words = m_movie.open(playerProtocol::mediaFile, playerProtocol::pictureFile, sound))
            leave({Report::Kind::outputFailed, *words});
        for (;;)
            work();
    }

private:
    void beginToSign() const {
        const timespec period{.tv_sec = playerProtocol::secondsBetweenSigns, .tv_nsec = 0};
        const itimerspec times{.it_interval = period, .it_value = period};
        timerfd_settime(m_signs, 0, &times, nullptr);
    }

    void work() {
        std::array<pollfd, 3> waiting{{{STDIN_FILENO, POLLIN, 0}, {m_wake, POLLIN, 0}, {m_signs, POLLIN, 0}}};
        if (::poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR)
            std::_Exit(EXIT_FAILURE);
        std::uint64_t count = 0; // of what has come since the last reading; neither waits
        if (::read(m_wake, &count, sizeof count) > 0)
            m_movie.work();
        if (::read(m_signs, &count, sizeof count) > 0)
            m_movie.look();
        if (waiting[0].revents != 0)
            readCommands();
    }

    void readCommands() {
        for (const std::string &line : m_commands.read()) {
            if (const auto command = playerProtocol::movieCommandIn(line))
                obey(*command);
            else if (const auto size = playerProtocol::sizeIn(line))
                m_movie.setPictureSize(*size);
        }
    }

    void obey(MovieCommand command) {
        switch (command) {
        case MovieCommand::play:
        case MovieCommand::pause:
            m_movie.setPaused(command == MovieCommand::pause);
            break;
        case MovieCommand::mute:
        case MovieCommand::unmute:
            m_movie.setMuted(command == MovieCommand::mute);
            break;
        case MovieCommand::next:
            m_movie.nextPicture();
            break;
        }
    }

    int m_wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    int m_signs = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
    Commands m_commands;
    Movie m_movie{
        {.ready = [] { say({Report::Kind::ready}); },
         .picture = [](playerProtocol::PictureSize size) { say({.kind = Report::Kind::picture, .size = size}); },
         .failed =
             [](bool isOutputToBlame, const std::string &words) {
                 leave({isOutputToBlame ? Report::Kind::outputFailed : Report::Kind::contentsFailed, words});
             },
         .isAlive = [] { say({Report::Kind::alive}); }},
        [](void *self) { eventfd_write(static_cast<MovieProcess *>(self)->m_wake, 1); },
        this};
};

} // namespace

void showMovie() {
    MovieProcess().run();
}

} // namespace tavrine
