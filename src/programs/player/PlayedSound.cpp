#include "programs/player/PlayedSound.h"

#include "adapters/linux/PlayerProtocol.h"
#include "programs/player/Commands.h"
#include "programs/player/Music.h"
#include "programs/player/Reports.h"
#include "programs/player/SoundServer.h"
#include "programs/player/Walls.h"

#include <array>
#include <cstdlib>

#include <sys/eventfd.h>
#include <unistd.h>

namespace tavrine {

using playerProtocol::Report;

namespace {

constexpr std::chrono::seconds longestWaitForServer{3};

/// The process between its first and its last line. One thread.
class SoundProcess {
public:
    SoundProcess()
        : m_music(
              {.ready = [] { say({Report::Kind::ready}); },
               .ended = [] { leave({Report::Kind::ended}); },
               .failed =
                   [](bool isOutputToBlame, const std::string &words) {
                       leave({isOutputToBlame ? Report::Kind::outputFailed : Report::Kind::contentsFailed, words});
                   },
               .wentOn = [] { say({Report::Kind::alive}); }},
              [](void *self) { eventfd_write(static_cast<SoundProcess *>(self)->m_wake, 1); }, this) {}

    [[noreturn]] void run() {
        if (const auto words = m_server.connect(longestWaitForServer))
            leave({Report::Kind::outputFailed, *words});
        m_server.setOnOutputChanged([] { leave({Report::Kind::outputChanged}); });
        // The library finds the server by this, for there are no files to look into any more.
        setenv("PULSE_SERVER", m_server.address().c_str(), 1);
        watch(m_wake, [](SoundProcess &player) {
            eventfd_t count = 0;
            eventfd_read(player.m_wake, &count);
            player.m_music.work();
        });
        watch(STDIN_FILENO, [](SoundProcess &player) { player.readCommands(); });
        if (const LockDownError error = lockSoundPlayer())
            leave({Report::Kind::outputFailed, "the player is not locked in: " + *error});
        if (const auto words = m_music.open(playerProtocol::mediaFile))
            leave({Report::Kind::outputFailed, *words});
        pa_mainloop_run(m_loop, nullptr);
        std::_Exit(EXIT_FAILURE);
    }

private:
    using Work = void (*)(SoundProcess &);

    void watch(int descriptor, Work work) {
        m_works[static_cast<std::size_t>(m_count)] = {this, work};
        m_api->io_new(
            m_api, descriptor, PA_IO_EVENT_INPUT,
            [](pa_mainloop_api *, pa_io_event *, int, pa_io_event_flags_t, void *data) {
                const auto *watched = static_cast<Watched *>(data);
                watched->work(*watched->player);
            },
            &m_works[static_cast<std::size_t>(m_count++)]);
    }

    void readCommands() {
        for (const std::string &line : m_commands.read())
            if (const auto loops = playerProtocol::loopsIn(line))
                play(*loops);
    }

    void play(int loops) {
        m_music.play(loops);
        timeval next{};
        pa_timeval_add(pa_gettimeofday(&next), signPeriod);
        m_api->time_new(
            m_api, &next,
            [](pa_mainloop_api *api, pa_time_event *event, const timeval *, void *data) {
                static_cast<SoundProcess *>(data)->m_music.look();
                timeval after{};
                api->time_restart(event, pa_timeval_add(pa_gettimeofday(&after), signPeriod));
            },
            this);
    }

    static constexpr pa_usec_t signPeriod = pa_usec_t(playerProtocol::secondsBetweenSigns) * PA_USEC_PER_SEC;

    struct Watched {
        SoundProcess *player;
        Work work;
    };

    pa_mainloop *m_loop = pa_mainloop_new();
    pa_mainloop_api *m_api = pa_mainloop_get_api(m_loop);
    SoundServer m_server{m_loop};
    int m_wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    Music m_music;
    Commands m_commands;
    std::array<Watched, 2> m_works{};
    int m_count = 0;
};

} // namespace

void playSound() {
    SoundProcess().run();
}

} // namespace tavrine
