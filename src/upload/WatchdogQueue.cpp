#include "upload/WatchdogQueue.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <limits>
#include <vector>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace tavrine {

WatchdogQueue::WatchdogQueue(const char *label)
    : m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), m_thread([this, label] {
          prctl(PR_SET_NAME, label);
          // A worker that ends unread must cost its pipe, not this program.
          sigset_t pipeSignal;
          sigemptyset(&pipeSignal);
          sigaddset(&pipeSignal, SIGPIPE);
          pthread_sigmask(SIG_BLOCK, &pipeSignal, nullptr);
          run();
      }) {}

WatchdogQueue::~WatchdogQueue() {
    {
        const std::lock_guard guard(m_lock);
        m_isEnding = true;
    }
    wake();
    m_thread.join();
}

WatchdogQueue::Token WatchdogQueue::asyncAt(Clock::time_point moment, Work work) {
    Token token = 0;
    {
        const std::lock_guard guard(m_lock);
        token = ++m_lastToken;
        m_items.emplace(moment, Item{token, std::move(work)});
    }
    wake();
    return token;
}

void WatchdogQueue::cancel(Token token) {
    const std::lock_guard guard(m_lock);
    std::erase_if(m_items, [token](const auto &item) { return item.second.token == token; });
}

void WatchdogQueue::write(Descriptor pipe, QByteArray bytes) {
    {
        const std::lock_guard guard(m_lock);
        m_newWritings.push_back({std::move(pipe), std::move(bytes)});
    }
    wake();
}

void WatchdogQueue::wake() {
    eventfd_write(m_wake.number(), 1);
}

int WatchdogQueue::waitMilliseconds() const {
    if (m_items.empty())
        return -1;
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(m_items.begin()->first - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(wait, 0, std::numeric_limits<int>::max()));
}

void WatchdogQueue::run() {
    while (true) {
        std::vector<Work> due;
        int wait = 0;
        {
            const std::lock_guard guard(m_lock);
            if (m_isEnding)
                return;
            m_writings.splice(m_writings.end(), m_newWritings);
            while (!m_items.empty() && m_items.begin()->first <= Clock::now()) {
                due.push_back(std::move(m_items.begin()->second.work));
                m_items.erase(m_items.begin());
            }
            wait = due.empty() ? waitMilliseconds() : 0;
        }
        for (const Work &work : due)
            work();
        std::vector<pollfd> descriptors{{m_wake.number(), POLLIN, 0}};
        for (const Writing &writing : m_writings)
            descriptors.push_back({writing.pipe.number(), POLLOUT, 0});
        if (poll(descriptors.data(), descriptors.size(), wait) <= 0)
            continue;
        eventfd_t ignored = 0;
        eventfd_read(m_wake.number(), &ignored);
        m_writings.remove_if([](Writing &writing) { return advance(writing); });
    }
}

/// True once there is nothing left to do.
bool WatchdogQueue::advance(Writing &writing) {
    while (writing.written < writing.bytes.size()) {
        const ssize_t count = ::write(writing.pipe.number(), writing.bytes.constData() + writing.written,
                                      static_cast<std::size_t>(writing.bytes.size() - writing.written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return errno != EAGAIN;
        writing.written += count;
    }
    return true;
}

} // namespace tavrine
