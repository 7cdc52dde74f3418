#include "adapters/linux/HelperProcess.h"

#include "adapters/linux/HelperStart.h"
#include "base/ErrorText.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr int fileOfHelper = 3;
constexpr int resultOfHelper = highestHelperNumber;

QString textOf(int error) {
    return QString::fromLocal8Bit(errorText(error));
}

struct Pipe {
    Descriptor reading;
    Descriptor writing;

    /// Above the numbers that a program is started with, so that none is overwritten before it is handed on.
    [[nodiscard]] bool open() {
        int ends[2] = {-1, -1};
        if (pipe2(ends, O_CLOEXEC) != 0)
            return false;
        const Descriptor first(ends[0]);
        const Descriptor second(ends[1]);
        reading = aboveHelperNumbers(first.number());
        writing = aboveHelperNumbers(second.number());
        return reading.isOpen() && writing.isOpen();
    }
};

/// Takes the ended process off the list of the kernel, whenever it ends: one that waits for a disk is not waited for.
void reapLater(pid_t pid) {
    if (waitpid(pid, nullptr, WNOHANG) != 0)
        return;
    const int ended = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    if (ended < 0)
        return;
    auto *notifier = new QSocketNotifier(ended, QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [notifier, pid, ended] {
        waitpid(pid, nullptr, WNOHANG);
        notifier->setEnabled(false);
        notifier->deleteLater();
        ::close(ended);
    });
}

} // namespace

HelperProcess::HelperProcess(const Start &wanted, Handlers handlers) : m_handlers(std::move(handlers)) {
    m_silence.setSingleShot(true);
    connect(&m_silence, &QTimer::timeout, this, [this] { end(QStringLiteral("it does not answer")); });
    if (const int error = start(wanted)) {
        QMetaObject::invokeMethod(
            this, [this, error] { end(textOf(error)); }, Qt::QueuedConnection);
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_output.number(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { read(); });
    setLongestSilence(wanted.longestSilence);
}

HelperProcess::~HelperProcess() {
    kill();
}

int HelperProcess::start(const Start &start) {
    Pipe input;
    Pipe output;
    Descriptor file;
    Descriptor result;
    if (!input.open() || !output.open())
        return errno;
    HelperStart helper{
        .program = start.program,
        .arguments = start.arguments,
        .descriptors = {{input.reading.number(), STDIN_FILENO}, {output.writing.number(), STDOUT_FILENO}}};
    for (const auto &[wanted, copy, number] :
         {std::tuple(start.file, &file, fileOfHelper), std::tuple(start.result, &result, resultOfHelper)}) {
        if (wanted < 0)
            continue;
        *copy = aboveHelperNumbers(wanted);
        if (!copy->isOpen())
            return errno;
        helper.descriptors.emplace_back(copy->number(), number);
    }
    pid_t pid = 0;
    if (const int error = startHelper(pid, helper))
        return error;
    m_pid = pid;
    m_input = std::move(input.writing);
    m_output = std::move(output.reading);
    for (const Descriptor *end : {&m_input, &m_output})
        fcntl(end->number(), F_SETFL, fcntl(end->number(), F_GETFL) | O_NONBLOCK);
    return 0;
}

void HelperProcess::write(const std::string &line) {
    if (m_input.isOpen())
        static_cast<void>(::write(m_input.number(), line.data(), line.size()));
}

void HelperProcess::setLongestSilence(std::chrono::milliseconds longest) {
    if (longest.count() > 0)
        m_silence.start(longest);
    else
        m_silence.stop();
}

void HelperProcess::read() {
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(m_output.number(), bytes.data(), bytes.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (count <= 0) {
        end(QStringLiteral("it ended unexpectedly"));
        return;
    }
    if (m_silence.isActive())
        m_silence.start();
    const QPointer<HelperProcess> self(this);
    const auto lines = m_lines.take({bytes.data(), static_cast<std::size_t>(count)});
    for (const std::string &line : lines) {
        const auto handler = m_handlers.line; // it may destroy us with our own
        handler(line);
        if (!self || m_pid == 0)
            return;
    }
    if (m_lines.isBroken())
        end(QStringLiteral("it makes no sense"));
}

void HelperProcess::end(const QString &reason) {
    kill();
    if (const auto ended = std::exchange(m_handlers.ended, nullptr))
        ended(reason);
}

void HelperProcess::kill() {
    m_silence.stop();
    if (m_notifier) { // its own call may be under way
        m_notifier->setEnabled(false);
        m_notifier.release()->deleteLater();
    }
    if (const auto pid = static_cast<pid_t>(std::exchange(m_pid, 0))) {
        ::kill(pid, SIGKILL);
        reapLater(pid);
    }
}

} // namespace tavrine
