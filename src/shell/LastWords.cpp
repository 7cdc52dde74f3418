#include "shell/LastWords.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <string_view>

#include <execinfo.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <unwind.h>

// From here on only what may be called within a signal: no heap, no locks of ours, no streams.
namespace tavrine {
namespace {

struct Signal {
    int number;
    std::string_view name;
};

/// The program's own faults, or a limit that it hit: the way there is told as well.
constexpr std::array faults{Signal{SIGSEGV, "SEGV"}, Signal{SIGBUS, "BUS"},   Signal{SIGILL, "ILL"},
                            Signal{SIGFPE, "FPE"},   Signal{SIGABRT, "ABRT"}, Signal{SIGTRAP, "TRAP"},
                            Signal{SIGSYS, "SYS"},   Signal{SIGXCPU, "XCPU"}, Signal{SIGXFSZ, "XFSZ"}};
/// How others end it.
constexpr std::array requests{Signal{SIGTERM, "TERM"}, Signal{SIGHUP, "HUP"}, Signal{SIGINT, "INT"},
                              Signal{SIGQUIT, "QUIT"}};

constexpr unsigned longestTellingSeconds = 3;
constexpr std::size_t mostFrames = 48;
constexpr std::size_t stackSize = 128UL * 1024; // the unwinder takes some 10 KB of it, and wide registers as much

pid_t ownProcess = 0;

/// A line that is put together in place.
class Line {
public:
    Line &operator<<(std::string_view text) {
        const std::size_t count = std::min(text.size(), m_text.size() - 1 - m_length);
        std::copy_n(text.data(), count, m_text.data() + m_length);
        m_length += count;
        return *this;
    }
    Line &operator<<(long number) {
        std::array<char, 24> digits{};
        std::size_t begin = digits.size();
        do {
            digits[--begin] = static_cast<char>('0' + number % 10);
            number /= 10;
        } while (number > 0 && begin > 0);
        return *this << std::string_view(digits.data() + begin, digits.size() - begin);
    }
    [[nodiscard]] const char *text() const { return m_text.data(); }
    /// False when nobody takes it now.
    [[nodiscard]] bool write() const {
        pollfd errors{.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
        return ::poll(&errors, 1, 0) == 1 && (errors.revents & POLLOUT) &&
               ::write(STDERR_FILENO, m_text.data(), m_length) > 0;
    }

private:
    std::array<char, 256> m_text{};
    std::size_t m_length = 0;
};

std::string_view nameOf(int number) {
    for (const auto &known : faults)
        if (known.number == number)
            return known.name;
    for (const auto &known : requests)
        if (known.number == number)
            return known.name;
    return "?";
}

/// The sender, and what it calls itself as long as it is there.
void tellSender(Line &line, pid_t process) {
    line << ", sent by process " << long{process};
    Line path;
    path << "/proc/" << long{process} << "/comm";
    const int file = ::open(path.text(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return;
    std::array<char, 32> name{};
    const ssize_t count = ::read(file, name.data(), name.size());
    ::close(file);
    if (count > 1) // the last is the line's end
        line << " (" << std::string_view(name.data(), static_cast<std::size_t>(count) - 1) << ")";
}

struct Frames {
    std::array<void *, mostFrames> addresses{};
    std::size_t count = 0;
};

/// As backtrace() does, which would load the unwinder at its first call.
_Unwind_Reason_Code addFrame(_Unwind_Context *context, void *to) {
    auto &frames = *static_cast<Frames *>(to);
    if (frames.count == frames.addresses.size())
        return _URC_END_OF_STACK;
    frames.addresses[frames.count++] = reinterpret_cast<void *>(_Unwind_GetIP(context));
    return _URC_NO_REASON;
}

bool isFault(int number) {
    return std::ranges::any_of(faults, [number](const Signal &fault) { return fault.number == number; });
}

void tell(int number, const siginfo_t &info) {
    // Neither a full pipe nor a lock that the linker held at the fault keeps a program that has ended.
    std::signal(SIGALRM, SIG_DFL);
    ::alarm(longestTellingSeconds);
    Line line;
    line << "tavrine: ended by signal " << long{number} << " (" << nameOf(number) << ")";
    const bool isSent = info.si_code == SI_USER || info.si_code == SI_QUEUE || info.si_code == SI_TKILL;
    if (isSent && info.si_pid != ownProcess)
        tellSender(line, info.si_pid);
    line << "\n";
    if (!line.write() || !isFault(number))
        return;
    Frames frames;
    _Unwind_Backtrace(&addFrame, &frames);
    ::backtrace_symbols_fd(frames.addresses.data(), static_cast<int>(frames.count), STDERR_FILENO);
}

/// The signal has its default action again. It comes with all that it came with, as soon as this returns: to the place
/// of the fault, which the core shows.
void handleSignal(int number, siginfo_t *info, void *) {
    const int error = errno;
    if (::getpid() == ownProcess)
        tell(number, *info);
    if (::syscall(SYS_rt_tgsigqueueinfo, ::getpid(), ::gettid(), number, info) != 0)
        std::raise(number);
    errno = error;
}

void handle(int number) {
    struct sigaction before {};
    if (::sigaction(number, nullptr, &before) != 0 || before.sa_handler != SIG_DFL)
        return;
    struct sigaction action {};
    action.sa_sigaction = &handleSignal;
    action.sa_flags = static_cast<int>(SA_SIGINFO | SA_ONSTACK | SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    ::sigaction(number, &action, nullptr);
}

} // namespace

void tellLastWords() {
    static std::array<std::byte, stackSize> memory; // untouched until it is needed, and so costs nothing
    ownProcess = ::getpid();
    stack_t present{};
    if (::sigaltstack(nullptr, &present) == 0 && (present.ss_flags & SS_DISABLE)) {
        const stack_t own{.ss_sp = memory.data(), .ss_flags = 0, .ss_size = memory.size()};
        ::sigaltstack(&own, nullptr);
    }
    for (const Signal &fault : faults)
        handle(fault.number);
    for (const Signal &request : requests)
        handle(request.number);
}

} // namespace tavrine
