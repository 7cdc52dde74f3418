#include "adapters/linux/PosixTaskLauncher.h"

#include <QByteArray>
#include <QFile>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr QLatin1String captureTool("/usr/sbin/screencapture");
constexpr int signalBase = 128;    // as shells count
constexpr int unknownStatus = 255; // nothing is known of the end but that it came

QString textOf(int error) {
    return QString::fromLocal8Bit(std::strerror(error));
}

/// What the task and the thread that waits for its program share.
struct Run {
    std::mutex mutex;
    pid_t pid = 0;
    bool isRunning = false;
    Task::TerminationHandler handler;
};

/// The settings of a fresh process, freed with it.
class Settings {
public:
    Settings() {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
        posix_spawnattr_init(&m_attributes);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        posix_spawnattr_setsigdefault(&m_attributes, &all); // we ignore SIGPIPE; others rely on it
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~Settings() {
        posix_spawn_file_actions_destroy(&m_actions);
        posix_spawnattr_destroy(&m_attributes);
    }
    Settings(const Settings &) = delete;
    Settings &operator=(const Settings &) = delete;

    int spawn(pid_t &pid, const QString &program, const QStringList &arguments) {
        std::vector<QByteArray> texts{QFile::encodeName(program)};
        for (const QString &argument : arguments)
            texts.push_back(QFile::encodeName(argument));
        std::vector<char *> pointers;
        for (QByteArray &text : texts)
            pointers.push_back(text.data());
        pointers.push_back(nullptr);
        return posix_spawn(&pid, texts.front().constData(), &m_actions, &m_attributes, pointers.data(), environ);
    }

private:
    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
};

/// Until the program has ended; the status is fetched under the lock, so that no signal can go to a number that
/// belongs to another process by then.
void waitForEnd(const std::shared_ptr<Run> &run) {
    siginfo_t info{};
    while (waitid(P_PID, static_cast<id_t>(run->pid), &info, WEXITED | WNOWAIT) == -1 && errno == EINTR) {
    }
    int terminationStatus = unknownStatus;
    Task::TerminationHandler handler;
    {
        const std::lock_guard lock(run->mutex);
        int status = 0;
        if (waitpid(run->pid, &status, 0) == run->pid)
            terminationStatus = WIFSIGNALED(status) ? signalBase + WTERMSIG(status) : WEXITSTATUS(status);
        run->isRunning = false;
        handler = std::move(run->handler);
    }
    if (handler)
        handler(terminationStatus);
}

class PosixTask final : public Task {
public:
    PosixTask(QString program, QStringList arguments)
        : m_program(std::move(program)), m_arguments(std::move(arguments)) {}

    void setTerminationHandler(TerminationHandler handler) override { m_run->handler = std::move(handler); }

    std::optional<QString> launch() override {
        if (m_run->pid != 0)
            return QStringLiteral("launched before");
        pid_t pid = 0;
        if (const int error = Settings().spawn(pid, m_program, m_arguments))
            return textOf(error);
        m_run->pid = pid;
        m_run->isRunning = true;
        try {
            std::thread([run = m_run] { waitForEnd(run); }).detach();
        } catch (const std::system_error &error) {
            // A program whose end nobody would see is worse than none.
            m_run->isRunning = false;
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
            return textOf(error.code().value());
        }
        return std::nullopt;
    }

    [[nodiscard]] bool isRunning() const override {
        const std::lock_guard lock(m_run->mutex);
        return m_run->isRunning;
    }

    void terminate() override {
        const std::lock_guard lock(m_run->mutex);
        if (m_run->isRunning)
            kill(m_run->pid, SIGTERM);
    }

private:
    QString m_program;
    QStringList m_arguments;
    std::shared_ptr<Run> m_run = std::make_shared<Run>();
};

} // namespace

QString PosixTaskLauncher::programAt(const QString &launchPath) const {
    const QString own = launchPath == captureTool ? QStringLiteral("screencapture") : launchPath;
    return own.contains(QLatin1Char('/')) ? own : m_programFolder + QLatin1Char('/') + own;
}

std::shared_ptr<Task> PosixTaskLauncher::makeTask(const QString &launchPath, const QStringList &arguments) {
    return std::make_shared<PosixTask>(programAt(launchPath), arguments);
}

} // namespace tavrine
