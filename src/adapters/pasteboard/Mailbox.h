#pragma once

#include <mutex>
#include <utility>
#include <vector>

#include <sys/eventfd.h>
#include <unistd.h>

namespace tavrine {

/// Messages to a thread that sleeps in `poll`. Shared with those who post, who may outlive the reader.
template <class Message>
class Mailbox {
public:
    Mailbox() : m_wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    ~Mailbox() {
        if (isUsable())
            ::close(m_wakeUp);
    }
    Mailbox(const Mailbox &) = delete;
    Mailbox &operator=(const Mailbox &) = delete;

    [[nodiscard]] bool isUsable() const { return m_wakeUp >= 0; }
    /// Can be read while something waits.
    [[nodiscard]] int wakeUp() const { return m_wakeUp; }

    void post(Message message) {
        const std::lock_guard lock(m_mutex);
        if (!m_isRead)
            return;
        m_messages.push_back(std::move(message));
        ::eventfd_write(m_wakeUp, 1);
    }
    [[nodiscard]] std::vector<Message> takeAll() {
        const std::lock_guard lock(m_mutex);
        eventfd_t count = 0;
        ::eventfd_read(m_wakeUp, &count);
        return std::exchange(m_messages, {});
    }
    /// Whether anybody reads: else nothing is taken in, and what waits is dropped.
    void setRead(bool is) {
        const std::lock_guard lock(m_mutex);
        m_isRead = is;
        m_messages.clear();
    }

private:
    const int m_wakeUp;
    std::mutex m_mutex;
    std::vector<Message> m_messages;
    bool m_isRead = false;
};

} // namespace tavrine
