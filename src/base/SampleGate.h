#pragma once

#include "base/Waker.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

namespace tavrine {

/// What a stream of samples and the thread that it comes from share. The thread may live on for a moment when the
/// stream is over, and nobody waits for it; from then on it reaches no handler.
template <class Sample>
class SampleGate {
public:
    using Handler = std::function<void(const Sample &sample)>;

    explicit SampleGate(Handler handler) : m_handler(std::move(handler)) {}

    /// On the stream's thread.
    void deliver(const Sample &sample) {
        const std::lock_guard lock(m_mutex);
        if (!m_isOver && m_handler)
            m_handler(sample);
    }
    [[nodiscard]] bool isOver() const { return m_isOver; }

    /// No call of the handler begins any more.
    void end() {
        m_isOver = true;
        m_waker->wake();
    }
    /// After `end`: whether none is under way either. `waitUntilSilent` waits for the one that is; handlers do not
    /// block.
    [[nodiscard]] bool isSilent() {
        const std::unique_lock lock(m_mutex, std::try_to_lock);
        return lock.owns_lock();
    }
    void waitUntilSilent() { const std::lock_guard lock(m_mutex); }

    /// Wakes the stream's thread.
    [[nodiscard]] const std::shared_ptr<Waker> &waker() const { return m_waker; }

private:
    std::mutex m_mutex;
    Handler m_handler;
    std::atomic<bool> m_isOver = false;
    const std::shared_ptr<Waker> m_waker = std::make_shared<Waker>();
};

} // namespace tavrine
