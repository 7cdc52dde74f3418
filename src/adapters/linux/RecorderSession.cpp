#include "adapters/linux/RecorderSession.h"

#include "adapters/linux/HelperStart.h"
#include "adapters/linux/RecorderProtocol.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace tavrine {
namespace {

using recorderProtocol::Report;

/// A second of sound and its overhead; the kernel gives what it has.
constexpr int bytesOnTheWay = 1 << 20;

QString ended() {
    return QStringLiteral("the encoder ended unexpectedly");
}
QString noAnswer() {
    return QStringLiteral("the encoder does not answer");
}

} // namespace

int RecorderSession::start(const QString &program, const std::string &firstMessage) {
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return errno;
    m_socket = Descriptor(ends[0]);
    const Descriptor other(ends[1]);
    const Descriptor given = aboveHelperNumbers(other.number());
    const Descriptor file = aboveHelperNumbers(m_file.number());
    m_wake = Descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!given.isOpen() || !file.isOpen() || !m_wake.isOpen())
        return errno;
    ::setsockopt(m_socket.number(), SOL_SOCKET, SO_SNDBUF, &bytesOnTheWay, sizeof bytesOnTheWay);
    if (const int error = startHelper(m_pid, {.program = program,
                                              .descriptors = {{given.number(), recorderProtocol::socket},
                                                              {file.number(), recorderProtocol::file}},
                                              .group = HelperStart::Group::own}))
        return error;
    static_cast<void>(send(firstMessage, -1)); // whoever is gone is heard of below
    m_status = MovieWriterStatus::writing;
    std::thread([self = shared_from_this()] { self->run(); }).detach();
    return 0;
}

bool RecorderSession::send(const std::string &message, int memory) const {
    iovec part{const_cast<char *>(message.data()), message.size()};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    if (memory >= 0) {
        header.msg_control = control.data();
        header.msg_controllen = control.size();
        cmsghdr *const one = CMSG_FIRSTHDR(&header);
        one->cmsg_level = SOL_SOCKET;
        one->cmsg_type = SCM_RIGHTS;
        one->cmsg_len = CMSG_LEN(sizeof memory);
        std::memcpy(CMSG_DATA(one), &memory, sizeof memory);
    }
    return ::sendmsg(m_socket.number(), &header, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0;
}

bool RecorderSession::tell(const std::string &message) {
    return m_status == MovieWriterStatus::writing && send(message, -1);
}

bool RecorderSession::tell(const std::string &message, int memory, std::shared_ptr<const ScreenFrame> frame) {
    const std::lock_guard lock(m_mutex); // its answer may come before we hold it
    if (m_status != MovieWriterStatus::writing || m_held.size() >= mostHeldFrames || !send(message, memory))
        return false;
    m_held.push_back(std::move(frame));
    return true;
}

bool RecorderSession::holdsAllFrames() const {
    const std::lock_guard lock(m_mutex);
    return m_held.size() >= mostHeldFrames;
}

bool RecorderSession::takesMore() const {
    pollfd socket{m_socket.number(), POLLOUT, 0};
    return ::poll(&socket, 1, 0) > 0 && (socket.revents & POLLOUT) != 0;
}

void RecorderSession::wake() const {
    ::eventfd_write(m_wake.number(), 1);
}

void RecorderSession::finish(const std::string &lastMessage, std::chrono::milliseconds patience,
                             MovieWriter::Completion completion) {
    const std::lock_guard lock(m_mutex);
    m_completion = std::move(completion);
    if (m_status != MovieWriterStatus::writing) { // nobody listens any more
        std::thread([self = shared_from_this()] { self->tellEnd(); }).detach();
        return;
    }
    m_lastMessage = lastMessage;
    setDeadline(patience);
}

void RecorderSession::abandon(std::chrono::milliseconds patience) {
    const std::lock_guard calling(m_calling); // what is being called is waited for
    const std::lock_guard lock(m_mutex);
    m_completion = nullptr;
    m_onEndedByItself = nullptr;
    if (m_status != MovieWriterStatus::writing || m_deadline)
        return;
    ::shutdown(m_socket.number(), SHUT_WR);
    setDeadline(patience);
}

void RecorderSession::setDeadline(std::chrono::milliseconds patience) {
    m_patience = patience;
    m_lastDeadline = Clock::now() + longestEnding;
    m_deadline = Clock::now() + patience;
    wake();
}

void RecorderSession::noteLife() {
    const std::lock_guard lock(m_mutex);
    if (m_deadline)
        m_deadline = std::min(Clock::now() + m_patience, m_lastDeadline);
}

void RecorderSession::cancel() {
    std::deque<std::shared_ptr<const ScreenFrame>> held;
    const std::lock_guard lock(m_mutex);
    m_held.swap(held);
    if (m_status == MovieWriterStatus::writing)
        ::shutdown(m_socket.number(), SHUT_RDWR); // the listener ends the process
    m_status = MovieWriterStatus::cancelled;
    m_onEndedByItself = nullptr;
    removeFile();
}

void RecorderSession::setError(const QString &error) {
    const std::lock_guard lock(m_mutex);
    m_error = error;
}

std::optional<QString> RecorderSession::error() const {
    const std::lock_guard lock(m_mutex);
    return m_error;
}

bool RecorderSession::isFileInPlace() const {
    struct stat made {};
    struct stat found {};
    return ::fstat(m_file.number(), &made) == 0 && ::lstat(m_path.c_str(), &found) == 0 &&
           made.st_dev == found.st_dev && made.st_ino == found.st_ino;
}

void RecorderSession::removeFile() const {
    if (isFileInPlace())
        ::unlink(m_path.c_str());
}

void RecorderSession::run() {
    ::prctl(PR_SET_NAME, "recorder");
    std::optional<QString> error = listen();
    ::kill(m_pid, SIGKILL); // it has written what it says it has
    end(std::move(error));
    while (::waitpid(m_pid, nullptr, 0) < 0 && errno == EINTR) {
    }
}

std::optional<QString> RecorderSession::listen() {
    while (wait()) {
        {
            const std::lock_guard lock(m_mutex);
            if (m_lastMessage && send(*m_lastMessage, -1))
                m_lastMessage.reset();
        }
        if (auto ending = hear())
            return *ending;
    }
    return noAnswer();
}

bool RecorderSession::wait() {
    std::array<pollfd, 2> watched{{{m_socket.number(), POLLIN, 0}, {m_wake.number(), POLLIN, 0}}};
    int milliseconds = -1;
    {
        const std::lock_guard lock(m_mutex);
        if (m_lastMessage)
            watched[0].events |= POLLOUT;
        if (m_deadline) {
            const auto rest = std::chrono::ceil<std::chrono::milliseconds>(*m_deadline - Clock::now());
            if (rest.count() <= 0)
                return false;
            milliseconds = static_cast<int>(rest.count());
        }
    }
    ::poll(watched.data(), watched.size(), milliseconds);
    eventfd_t count = 0;
    ::eventfd_read(m_wake.number(), &count);
    return true;
}

std::optional<std::optional<QString>> RecorderSession::hear() {
    std::array<char, recorderProtocol::longestMessage> bytes;
    const ssize_t count = ::recv(m_socket.number(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    // A reset tells that it ended with something unread; its last words still follow.
    if (count < 0 && (errno == EAGAIN || errno == EINTR || errno == ECONNRESET))
        return std::nullopt;
    if (count <= 0)
        return ended();
    const auto report = recorderProtocol::reportIn({bytes.data(), static_cast<std::size_t>(count)});
    if (!report)
        return QStringLiteral("the encoder makes no sense");
    noteLife();
    switch (report->kind) {
    case Report::Kind::taken:
        letFrameGo();
        return std::nullopt;
    case Report::Kind::writing:
        return std::nullopt;
    case Report::Kind::finished:
        return isFileInPlace() ? std::optional<QString>() : QStringLiteral("the file is gone");
    case Report::Kind::diskIsFull:
        m_failure = MovieWriterFailure::diskIsFull;
        [[fallthrough]];
    case Report::Kind::failed:
        return QString::fromStdString(report->words);
    }
    return std::nullopt;
}

void RecorderSession::letFrameGo() {
    std::shared_ptr<const ScreenFrame> taken; // let go outside of the lock: the stream is told by it
    const std::lock_guard lock(m_mutex);
    m_hasTaken = true;
    if (m_held.empty())
        return;
    taken = std::move(m_held.front());
    m_held.pop_front();
}

void RecorderSession::end(std::optional<QString> error) {
    std::deque<std::shared_ptr<const ScreenFrame>> held;
    {
        const std::lock_guard lock(m_mutex);
        m_held.swap(held);
        if (m_status == MovieWriterStatus::writing) {
            if (error && !m_hasTaken)
                removeFile(); // without a picture it is no movie
            m_status = error ? MovieWriterStatus::failed : MovieWriterStatus::completed;
            m_error = std::move(error);
        }
    }
    held.clear();
    tellEnd();
}

void RecorderSession::tellEnd() {
    const std::lock_guard calling(m_calling);
    MovieWriter::Completion completion;
    {
        const std::lock_guard lock(m_mutex);
        const auto byItself = std::exchange(m_onEndedByItself, nullptr);
        completion = std::exchange(m_completion, nullptr);
        if (!completion)
            completion = byItself;
    }
    if (completion)
        completion();
}

} // namespace tavrine
