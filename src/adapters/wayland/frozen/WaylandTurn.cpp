#include "adapters/wayland/frozen/WaylandTurn.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// A program that was told to end does so within a few milliseconds; one that hangs is not waited for.
constexpr auto longestWaitForOther = 400ms;
constexpr auto longestEnd = 100ms;
constexpr auto untilNextTry = 2ms;
constexpr int mostWaiting = 8;

std::string environment(const char *name) {
    const char *const value = std::getenv(name);
    return value ? value : "";
}

struct Address {
    sockaddr_un name{};
    socklen_t length = 0;
};

/// A name of the kernel's own, which begins with a zero.
Address address() {
    const std::string display = environment("WAYLAND_DISPLAY");
    const std::string text = "tavrine-screen-turn:" + std::to_string(::geteuid()) + ':' +
                             (display.starts_with('/') ? display : environment("XDG_RUNTIME_DIR") + '/' + display);
    Address made;
    made.name.sun_family = AF_UNIX;
    const size_t length = std::min(text.size(), sizeof made.name.sun_path - 1);
    std::memcpy(made.name.sun_path + 1, text.data(), length);
    made.length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + length);
    return made;
}

std::optional<ucred> peerOf(int socket) {
    ucred who{};
    socklen_t length = sizeof who;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &who, &length) != 0 || who.uid != ::geteuid())
        return std::nullopt;
    return who;
}

bool isSameProgram(pid_t process) {
    struct stat own {};
    struct stat other {};
    return ::stat("/proc/self/exe", &own) == 0 &&
           ::stat(("/proc/" + std::to_string(process) + "/exe").c_str(), &other) == 0 && own.st_dev == other.st_dev &&
           own.st_ino == other.st_ino;
}

void endHanging(int call) {
    if (const auto other = peerOf(call); other && isSameProgram(other->pid))
        ::kill(other->pid, SIGKILL);
    ::poll(nullptr, 0, untilNextTry.count());
}

} // namespace

WaylandTurn::WaylandTurn() {
    const auto until = Clock::now() + longestWaitForOther;
    const auto last = until + longestEnd;
    while (!take() && errno == EADDRINUSE && Clock::now() < last)
        askOther(until);
}

bool WaylandTurn::take() {
    Descriptor line(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const Address where = address();
    if (::bind(line.number(), reinterpret_cast<const sockaddr *>(&where.name), where.length) != 0 ||
        ::listen(line.number(), mostWaiting) != 0) {
        const int error = errno;
        line.close();
        errno = error;
        return false;
    }
    m_line = std::move(line);
    return true;
}

void WaylandTurn::askOther(Clock::time_point until) {
    const Descriptor call(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const Address where = address();
    pollfd end{call.number(), POLLIN, 0};
    const auto left = std::max(std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()), 0ms);
    if (::connect(call.number(), reinterpret_cast<const sockaddr *>(&where.name), where.length) != 0)
        ::poll(nullptr, 0, untilNextTry.count()); // it ends at this moment, or too many ask
    else if (::poll(&end, 1, static_cast<int>(left.count())) == 0)
        endHanging(call.number());
}

bool WaylandTurn::isLost() {
    while (m_line.isOpen()) {
        Descriptor caller(::accept4(m_line.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!caller.isOpen())
            break;
        if (peerOf(caller.number()))
            m_callers.push_back(std::move(caller));
    }
    return !m_callers.empty();
}

} // namespace tavrine
