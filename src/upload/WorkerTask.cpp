#include "upload/WorkerTask.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavrine {
namespace {

// Debian 12's C library has no names for these.
constexpr auto pidfdType = static_cast<idtype_t>(3); // P_PIDFD of the kernel

/// Both ends above the standard three, so that handing them to a child never moves one over the other.
std::optional<std::pair<Descriptor, Descriptor>> makePipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return std::nullopt;
    const Descriptor first(ends[0]);
    const Descriptor second(ends[1]);
    Descriptor reading(fcntl(first.number(), F_DUPFD_CLOEXEC, 3));
    Descriptor writing(fcntl(second.number(), F_DUPFD_CLOEXEC, 3));
    if (!reading.isOpen() || !writing.isOpen())
        return std::nullopt;
    return std::pair(std::move(reading), std::move(writing));
}

void setNonBlocking(const Descriptor &descriptor) {
    fcntl(descriptor.number(), F_SETFL, fcntl(descriptor.number(), F_GETFL) | O_NONBLOCK);
}

/// How the child starts: its three descriptors, no blocked signal, and the pipe signal as every program expects it.
class SpawnSettings {
public:
    SpawnSettings(int input, int output) {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_adddup2(&m_actions, input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&m_actions, output, STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&m_actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawnattr_init(&m_attributes);
        sigset_t none;
        sigemptyset(&none);
        sigset_t defaults;
        sigemptyset(&defaults);
        for (const int signal : {SIGPIPE, SIGTERM, SIGINT, SIGCHLD})
            sigaddset(&defaults, signal);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        posix_spawnattr_setsigdefault(&m_attributes, &defaults);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&m_attributes);
        posix_spawn_file_actions_destroy(&m_actions);
    }
    SpawnSettings(const SpawnSettings &) = delete;
    SpawnSettings &operator=(const SpawnSettings &) = delete;

    [[nodiscard]] int spawn(const char *path, pid_t &pid) const {
        char *const arguments[] = {const_cast<char *>(path), nullptr};
        return posix_spawn(&pid, path, &m_actions, &m_attributes, arguments, environ);
    }

private:
    posix_spawn_file_actions_t m_actions;
    posix_spawnattr_t m_attributes;
};

} // namespace

int WorkerTask::launch(const QString &executable) {
    auto input = makePipe();
    auto output = makePipe();
    if (!input || !output)
        return errno;
    pid_t pid = 0;
    const SpawnSettings settings(input->first.number(), output->second.number());
    const int error = settings.spawn(QFile::encodeName(executable).constData(), pid);
    if (error != 0)
        return error;
    m_process = Descriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    if (!m_process.isOpen()) {
        const int reason = errno;
        ::kill(pid, SIGKILL); // ours and not yet waited for, so the number is still its own
        waitpid(pid, nullptr, 0);
        return reason;
    }
    m_input = std::move(input->second);
    m_output = std::move(output->first);
    setNonBlocking(m_input);
    setNonBlocking(m_output);
    return 0;
}

bool WorkerTask::isRunning() const {
    pollfd process{m_process.number(), POLLIN, 0};
    return m_process.isOpen() && poll(&process, 1, 0) == 0;
}

void WorkerTask::terminate() const {
    if (m_process.isOpen())
        syscall(SYS_pidfd_send_signal, m_process.number(), SIGTERM, nullptr, 0);
}

void WorkerTask::kill() const {
    if (m_process.isOpen())
        syscall(SYS_pidfd_send_signal, m_process.number(), SIGKILL, nullptr, 0);
}

void WorkerTask::waitUntilExit() const {
    siginfo_t info{};
    while (waitid(pidfdType, static_cast<id_t>(m_process.number()), &info, WEXITED) != 0 && errno == EINTR) {
    }
}

} // namespace tavrine
