// Loaded into a program, it makes faults of it: the signal SIGRTMIN comes with a number that says which.

#include <csignal>
#include <cstdlib>
#include <string_view>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

/// Fills the stack long before it has counted to the end. Its name stands in each line of the way there, which so are
/// more than a page.
extern "C" [[gnu::visibility("default")]] int
aStepFurtherDownWhichIsTakenUntilThereIsNoMoreRoomForAnotherOneOnTheStackOfThisThread( // NOLINT(misc-no-recursion)
    volatile int *above) {
    volatile int here[256] = {};
    here[0] = *above + 1;
    return here[0] < 0
               ? 0
               : aStepFurtherDownWhichIsTakenUntilThereIsNoMoreRoomForAnotherOneOnTheStackOfThisThread(here) + here[0];
}

namespace {

constexpr std::string_view childEnded = "The child was aborted.\n";

/// Tells on the standard output what the child ended by.
void abortChild() {
    const pid_t child = ::fork();
    if (child == 0)
        std::abort();
    int status = 0;
    if (::waitpid(child, &status, 0) == child && WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT)
        static_cast<void>(::write(STDOUT_FILENO, childEnded.data(), childEnded.size()));
}

void fault(int, siginfo_t *info, void *) {
    volatile int zero = 0;
    switch (info->si_value.sival_int) {
    case SIGSEGV:
        *static_cast<volatile int *>(nullptr) = 1;
        break;
    case SIGABRT:
        std::abort();
    case SIGFPE:
        zero = 7 / zero; // of one the compiler makes a comparison
        break;
    case SIGILL:
        __builtin_trap();
    case SIGSTKFLT: // its own stack
        zero = aStepFurtherDownWhichIsTakenUntilThereIsNoMoreRoomForAnotherOneOnTheStackOfThisThread(&zero);
        break;
    case SIGCHLD: // a child's
        abortChild();
        break;
    default:
        std::raise(info->si_value.sival_int);
        break;
    }
}

[[gnu::constructor]] void install() {
    struct sigaction action {};
    action.sa_sigaction = &fault;
    action.sa_flags = SA_SIGINFO;
    ::sigaction(SIGRTMIN, &action, nullptr);
}

} // namespace
