#include "adapters/pasteboard/Drops.h"

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <optional>
#include <thread>

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace tavrine {

class Drops::Drop {
public:
    Drop(Reading reading, std::function<void()> onLate)
        : m_reading(std::move(reading)), m_onLate(std::move(onLate)), m_stop(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
          m_thread([this] { run(); }) {}
    ~Drop() {
        ::eventfd_write(m_stop, 1);
        m_thread.join();
        ::close(m_stop);
    }
    Drop(const Drop &) = delete;
    Drop &operator=(const Drop &) = delete;

    Completion completion;

    /// The content, or none when it is not here in time: then `onLate` follows. To be called once.
    [[nodiscard]] std::optional<DroppedContent> waitFor(std::chrono::milliseconds longest) {
        std::unique_lock lock(m_mutex);
        if (!m_isHere.wait_for(lock, longest, [this] { return m_content.has_value(); })) {
            m_isLate = true;
            return std::nullopt;
        }
        return std::move(m_content);
    }
    /// After `onLate`.
    [[nodiscard]] DroppedContent take() {
        const std::lock_guard lock(m_mutex);
        return m_content ? std::move(*m_content) : DroppedContent();
    }

private:
    void run() {
        ::pthread_setname_np(::pthread_self(), "drop");
        // Signals are the main thread's; and a write to a server that has gone must fail, not end the process.
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
        DroppedContent content = m_reading(m_stop);
        bool isLate = false;
        {
            const std::lock_guard lock(m_mutex);
            m_content = std::move(content);
            isLate = m_isLate;
            m_isHere.notify_one();
        }
        if (isLate)
            m_onLate();
    }

    const Reading m_reading;
    const std::function<void()> m_onLate;
    const int m_stop; ///< readable when nobody waits any more
    std::mutex m_mutex;
    std::condition_variable m_isHere;
    std::optional<DroppedContent> m_content;
    bool m_isLate = false;
    std::thread m_thread;
};

Drops::Drops() = default;
Drops::~Drops() = default;

void Drops::read(Reading reading, Completion completion) {
    // On the thread the drop's own address is all that is needed of it, and it is known before anything is late.
    auto address = std::make_shared<const Drop *>(nullptr);
    auto drop = std::make_unique<Drop>(std::move(reading), [this, address] {
        QMetaObject::invokeMethod(
            this, [this, address] { finish(*address); }, Qt::QueuedConnection);
    });
    *address = drop.get();
    drop->completion = std::move(completion);
    if (const auto content = drop->waitFor(Dragging::answerLimit)) {
        const Completion tell = std::move(drop->completion);
        drop.reset();
        return tell(*content);
    }
    m_late.push_back(std::move(drop));
}

void Drops::finish(const Drop *drop) {
    const auto found = std::find_if(m_late.begin(), m_late.end(), [=](const auto &late) { return late.get() == drop; });
    const std::unique_ptr<Drop> late = std::move(*found);
    m_late.erase(found);
    const DroppedContent content = late->take();
    late->completion(content);
}

} // namespace tavrine
