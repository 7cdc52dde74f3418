// TavrineSounds [THEME]: plays the desktop's short sounds, as it is told on standard input, until that ends or it is
// killed. A line is the names that a theme may know a sound by, the best of them first.
#include "adapters/linux/HelperLines.h"
#include "walls/LockDown.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <map>
#include <sstream>
#include <string>
#include <thread>

#include <canberra.h>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

using namespace tavrine;
using namespace std::chrono_literals;

namespace {

/// Of addresses: what sound travels through to the server is hundreds of megabytes of them.
constexpr std::size_t mostMemory = std::size_t(1) << 30;
/// Sounds that begin together are one loud sound.
constexpr auto between = 40ms;
/// Of more at once nobody hears how many they are.
constexpr std::size_t mostWaiting = 25;
/// For the last sound's end; those of a theme are shorter.
constexpr auto patience = 3s;

class Sounds {
public:
    explicit Sounds(const char *theme) {
        if (ca_context_create(&m_context) != CA_SUCCESS)
            std::_Exit(EXIT_FAILURE);
        ca_context_change_props(m_context, CA_PROP_APPLICATION_NAME, "Tavrine", CA_PROP_MEDIA_ROLE, "event",
                                CA_PROP_CANBERRA_CACHE_CONTROL, "volatile", nullptr);
        if (theme)
            ca_context_change_props(m_context, CA_PROP_CANBERRA_XDG_THEME_NAME, theme, nullptr);
    }

    void play(const std::string &names) {
        auto known = m_known.find(names);
        if (known != m_known.end()) {
            begin(known->second);
            return;
        }
        std::istringstream words(names);
        for (std::string name; words >> name;) {
            if (begin(name)) {
                m_known.emplace(names, name);
                return;
            }
        }
    }
    [[nodiscard]] bool isPlaying() const { return m_playing > 0; }

private:
    /// False when the theme has no such sound, or nobody plays it.
    bool begin(const std::string &name) {
        ca_proplist *properties = nullptr;
        if (ca_proplist_create(&properties) != CA_SUCCESS)
            return false;
        ca_proplist_sets(properties, CA_PROP_EVENT_ID, name.c_str());
        const auto ended = [](ca_context *, std::uint32_t, int, void *playing) {
            --*static_cast<std::atomic<int> *>(playing);
        };
        ++m_playing;
        const bool isBegun = ca_context_play_full(m_context, m_number++, properties, ended, &m_playing) == CA_SUCCESS;
        if (!isBegun)
            --m_playing;
        ca_proplist_destroy(properties);
        return isBegun;
    }

    ca_context *m_context = nullptr;
    std::uint32_t m_number = 0;
    std::atomic<int> m_playing = 0; // counted down by the library's thread
    std::map<std::string, std::string> m_known;
};

/// Adds the lines that are there, and waits for one when `waits`. False at the end.
bool read(std::deque<std::string> &waiting, HelperLines &lines, bool waits) {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    if (::poll(&input, 1, waits ? -1 : 0) <= 0)
        return errno == EINTR || !waits;
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count <= 0)
        return false;
    for (std::string &line : lines.take({bytes.data(), static_cast<std::size_t>(count)})) {
        if (waiting.size() < mostWaiting)
            waiting.push_back(std::move(line));
    }
    return !lines.isBroken();
}

} // namespace

int main(int count, char **arguments) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    std::signal(SIGPIPE, SIG_IGN);
    if (limitMemory(mostMemory))
        return EXIT_FAILURE;
    Sounds sounds(count > 1 ? arguments[1] : nullptr);
    std::deque<std::string> waiting;
    HelperLines lines;
    bool isOpen = true;
    while (isOpen || !waiting.empty()) {
        if (isOpen)
            isOpen = read(waiting, lines, waiting.empty());
        if (waiting.empty())
            continue;
        sounds.play(waiting.front());
        waiting.pop_front();
        std::this_thread::sleep_for(between);
    }
    for (auto waited = 0ms; sounds.isPlaying() && waited < patience; waited += between)
        std::this_thread::sleep_for(between);
    std::_Exit(EXIT_SUCCESS);
}
