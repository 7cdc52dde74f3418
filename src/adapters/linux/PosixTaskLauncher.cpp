#include "adapters/linux/PosixTaskLauncher.h"

#include "base/Descriptor.h"
#include "base/ErrorText.h"

#include <QByteArray>
#include <QFile>

#include <cerrno>
#include <climits>
#include <csignal>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr QLatin1String captureTool("/usr/sbin/screencapture");
constexpr int signalBase = 128;    // as shells count
constexpr int unknownStatus = 255; // nothing is known of the end but that it came

QString textOf(int error) {
    return QString::fromLocal8Bit(errorText(error));
}

/// What the task and the thread that waits for its program share.
struct Run {
    std::mutex mutex;
    pid_t pid = 0;
    bool isRunning = false;
    Task::TerminationHandler handler;
};

/// The rest of a fresh process, up to the program's own code: only calls that are allowed between fork and exec.
[[noreturn]] void become(const char *program, char *const *arguments, int failure, pid_t parent) {
    // Whatever ends us ends the program too; and we may have ended before it could ask for that.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent)
        _exit(unknownStatus);
    for (int number = 1; number < NSIG; ++number) // we ignore SIGPIPE; others rely on it
        signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (nothing >= 0 && dup2(nothing, STDIN_FILENO) == STDIN_FILENO) {
        close_range(STDERR_FILENO + 1, static_cast<unsigned>(failure) - 1, 0);
        close_range(static_cast<unsigned>(failure) + 1, UINT_MAX, 0);
        execv(program, arguments);
    }
    const int error = errno;
    static_cast<void>(::write(failure, &error, sizeof error));
    _exit(unknownStatus);
}

/// 0 and the process, or errno's number. The process ends with the thread that starts it: the main one.
int spawn(pid_t &pid, const QString &program, const QStringList &arguments) {
    std::vector<QByteArray> texts{QFile::encodeName(program)};
    for (const QString &argument : arguments)
        texts.push_back(QFile::encodeName(argument));
    std::vector<char *> pointers;
    pointers.reserve(texts.size() + 1);
    for (QByteArray &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return errno;
    const Descriptor answer(ends[0]);
    Descriptor failure(fcntl(ends[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1)); // above what the program gets
    ::close(ends[1]);
    if (!failure.isOpen())
        return errno;
    const pid_t parent = getpid();
    pid = fork();
    if (pid < 0)
        return errno;
    if (pid == 0)
        become(texts.front().constData(), pointers.data(), failure.number(), parent);
    failure.close();
    // It says nothing when it has become the program, which closes its end.
    int error = 0;
    ssize_t count = 0;
    while ((count = read(answer.number(), &error, sizeof error)) < 0 && errno == EINTR) {
    }
    if (count != sizeof error)
        return 0;
    waitpid(pid, nullptr, 0);
    return error;
}

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
        if (const int error = spawn(pid, m_program, m_arguments))
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
