#pragma once

#include <QByteArray>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <future>
#include <thread>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tavrine::testing {

/// The test's X server, which is late with one of its answers: the next connection that is opened while this lives goes
/// through it. All that the server says from that answer on is held for a while.
class LateScreen {
public:
    explicit LateScreen(std::chrono::milliseconds length) : m_length(length), m_before(qgetenv("DISPLAY")) {
        constexpr int firstNumber = 3000; // servers take the lowest that is free
        constexpr int lastNumber = 3999;
        m_door = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        for (int number = firstNumber; number <= lastNumber && !m_isThere; ++number) {
            m_address = addressOf(QByteArray::number(number));
            qputenv("DISPLAY", ":" + QByteArray::number(number));
            m_isThere = ::bind(m_door, reinterpret_cast<const sockaddr *>(&m_address), sizeof m_address) == 0;
        }
        m_isThere = m_isThere && ::listen(m_door, 1) == 0;
        m_thread = std::thread([this] { serve(); });
    }
    ~LateScreen() {
        qputenv("DISPLAY", m_before);
        m_isOver.set_value();
        ::shutdown(m_door, SHUT_RDWR);
        for (const int end : {m_client.load(), m_server.load()})
            if (end >= 0)
                ::shutdown(end, SHUT_RDWR);
        m_thread.join();
        ::close(m_door);
        if (m_isThere)
            ::unlink(m_address.sun_path);
    }
    LateScreen(const LateScreen &) = delete;
    LateScreen &operator=(const LateScreen &) = delete;

    [[nodiscard]] bool isThere() const { return m_isThere; }
    /// Once a connection was opened: later ones do not come here.
    void close() const { qputenv("DISPLAY", m_before); }
    /// Holds the answer that comes after so many others.
    void hold(int answer) {
        m_hasHeld = m_hasLetGo = false;
        m_heldAnswer = m_answers + answer;
    }
    /// Whether there were that many answers.
    [[nodiscard]] bool hasHeld() const { return m_hasHeld; }
    /// Whether that is over.
    [[nodiscard]] bool hasLetGo() const { return m_hasLetGo; }

private:
    static sockaddr_un addressOf(const QByteArray &display) {
        const QByteArray path = "/tmp/.X11-unix/X" + display;
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy_n(path.constData(), std::min(size_t(path.size()), sizeof address.sun_path - 1), address.sun_path);
        return address;
    }

    void serve() {
        m_client = ::accept4(m_door, nullptr, nullptr, SOCK_CLOEXEC);
        m_server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const sockaddr_un address = addressOf(m_before.mid(m_before.indexOf(':') + 1).split('.').first());
        if (m_client >= 0 && ::connect(m_server, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0) {
            std::thread there([this] { passOn(); });
            answer();
            ::shutdown(m_client, SHUT_RDWR);
            there.join();
        }
        for (const int end : {m_client.exchange(-1), m_server.exchange(-1)})
            if (end >= 0)
                ::close(end);
    }

    /// What the client says, with the descriptors that it sends along.
    void passOn() {
        std::array<char, 65536> bytes{};
        alignas(cmsghdr) std::array<char, CMSG_SPACE(8 * sizeof(int))> control{};
        for (;;) {
            iovec part{bytes.data(), bytes.size()};
            msghdr message{};
            message.msg_iov = &part;
            message.msg_iovlen = 1;
            message.msg_control = control.data();
            message.msg_controllen = control.size();
            const ssize_t length = ::recvmsg(m_client, &message, MSG_CMSG_CLOEXEC);
            if (length <= 0)
                break;
            part.iov_len = static_cast<size_t>(length);
            ssize_t sent = ::sendmsg(m_server, &message, MSG_NOSIGNAL);
            for (cmsghdr *each = CMSG_FIRSTHDR(&message); each; each = CMSG_NXTHDR(&message, each))
                for (size_t i = 0; CMSG_LEN((i + 1) * sizeof(int)) <= each->cmsg_len; ++i) {
                    int descriptor = -1;
                    std::memcpy(&descriptor, CMSG_DATA(each) + i * sizeof(int), sizeof descriptor);
                    ::close(descriptor);
                }
            while (sent > 0 && sent < length) {
                const ssize_t more = ::send(m_server, bytes.data() + sent, size_t(length - sent), MSG_NOSIGNAL);
                sent = more > 0 ? sent + more : -1;
            }
            if (sent < 0)
                break;
        }
        ::shutdown(m_server, SHUT_RDWR);
    }

    /// What the server says, message by message.
    void answer() {
        QByteArray waiting;
        std::array<char, 65536> bytes{};
        bool isSetUp = false;
        for (ssize_t length = 0; (length = ::recv(m_server, bytes.data(), bytes.size(), 0)) > 0;) {
            waiting.append(bytes.data(), length);
            for (qsizetype size = 0;
                 (size = messageLength(waiting, isSetUp)) <= waiting.size() && !waiting.isEmpty();) {
                constexpr char reply = 1;
                if (isSetUp && waiting.front() == reply && m_answers++ == m_heldAnswer) {
                    m_hasHeld = true;
                    m_over.wait_for(m_length);
                    m_hasLetGo = true;
                }
                isSetUp = true;
                if (::send(m_client, waiting.constData(), size_t(size), MSG_NOSIGNAL) != size)
                    return;
                waiting.remove(0, size);
            }
        }
    }
    static qsizetype messageLength(const QByteArray &bytes, bool isSetUp) {
        const qsizetype head = isSetUp ? 32 : 8;
        if (bytes.size() < head)
            return head;
        constexpr char reply = 1;
        constexpr char genericEvent = 35;
        if (!isSetUp) {
            std::uint16_t words = 0;
            std::memcpy(&words, bytes.constData() + 6, sizeof words);
            return head + 4 * qsizetype{words};
        }
        std::uint32_t words = 0;
        if (bytes.front() == reply || (bytes.front() & 0x7f) == genericEvent)
            std::memcpy(&words, bytes.constData() + 4, sizeof words);
        return head + 4 * qsizetype{words};
    }

    std::atomic<int> m_heldAnswer = -1;
    const std::chrono::milliseconds m_length;
    const QByteArray m_before;
    sockaddr_un m_address{};
    bool m_isThere = false;
    int m_door = -1;
    std::atomic<int> m_client = -1;
    std::atomic<int> m_server = -1;
    std::atomic<int> m_answers = 0;
    std::atomic<bool> m_hasHeld = false;
    std::atomic<bool> m_hasLetGo = false;
    std::promise<void> m_isOver;
    std::future<void> m_over = m_isOver.get_future();
    std::thread m_thread;
};

} // namespace tavrine::testing
