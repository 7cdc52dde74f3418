#include "programs/screencapture/ShutterSound.h"

#include <csignal>
#include <initializer_list>

#include <canberra.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavrine {
namespace {

// The sound is one second long; a sound server that takes longer than this hangs.
constexpr unsigned longestSeconds = 6;

/// Detaches from the terminal, the pipes and the X connection of the process that it was part of.
void leaveFamily() {
    ::setsid();
    const int nowhere = ::open("/dev/null", O_RDWR);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(nowhere, descriptor);
    ::close_range(3, ~0U, 0);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::alarm(longestSeconds);
}

void playToTheEnd() {
    // Loaded here, so that a capture does not wait for it and a desktop without it has captures all the same.
    void *const library = ::dlopen("libcanberra.so.0", RTLD_NOW);
    if (!library)
        return;
    const auto create = reinterpret_cast<decltype(&ca_context_create)>(::dlsym(library, "ca_context_create"));
    const auto play = reinterpret_cast<decltype(&ca_context_play_full)>(::dlsym(library, "ca_context_play_full"));
    const auto proplistCreate = reinterpret_cast<decltype(&ca_proplist_create)>(::dlsym(library, "ca_proplist_create"));
    const auto proplistSet = reinterpret_cast<decltype(&ca_proplist_sets)>(::dlsym(library, "ca_proplist_sets"));
    if (!create || !play || !proplistCreate || !proplistSet)
        return;
    ca_context *context = nullptr;
    ca_proplist *properties = nullptr;
    if (create(&context) != CA_SUCCESS || proplistCreate(&properties) != CA_SUCCESS)
        return;
    proplistSet(properties, CA_PROP_EVENT_ID, "screen-capture");
    proplistSet(properties, CA_PROP_EVENT_DESCRIPTION, "Picture taken");
    proplistSet(properties, CA_PROP_APPLICATION_NAME, "Tavrine");
    proplistSet(properties, CA_PROP_CANBERRA_CACHE_CONTROL, "volatile");
    static int ends[2];
    if (::pipe(ends) != 0)
        return;
    const auto onEnd = [](ca_context *, uint32_t, int, void *) {
        const char done = 0;
        static_cast<void>(!::write(ends[1], &done, 1));
    };
    if (play(context, 0, properties, onEnd, nullptr) != CA_SUCCESS)
        return;
    pollfd ended{ends[0], POLLIN, 0};
    ::poll(&ended, 1, static_cast<int>(longestSeconds * 1000));
}

} // namespace

void playShutterSound() {
    const pid_t child = ::fork();
    if (child == 0) {
        // A grandchild, so that nobody has to collect it.
        if (::fork() == 0) {
            leaveFamily();
            playToTheEnd();
        }
        ::_exit(0);
    }
    if (child > 0)
        ::waitpid(child, nullptr, 0);
}

} // namespace tavrine
