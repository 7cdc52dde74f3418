#pragma once

#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <utility>

namespace tavrine {

/// Holds up calls that come from any thread, for fakes of what takes its time.
class FakeHold {
public:
    /// Waits while the calls are held. False when the wait ended for `stop` or for `cancel`, and for every call after
    /// these.
    [[nodiscard]] bool pass(std::stop_token stop) {
        std::unique_lock lock(m_mutex);
        const bool isHeldAlone = std::exchange(m_holdsNext, false);
        ++m_waiting;
        m_changed.wait(lock, stop, [&] { return m_isCancelled || !(m_isHeld || (isHeldAlone && m_isOneHeld)); });
        --m_waiting;
        return !m_isCancelled && !stop.stop_requested();
    }
    /// From now on a call takes without end, until it is let go again.
    void hold(bool isHeld) {
        const std::lock_guard lock(m_mutex);
        m_isHeld = isHeld;
        m_isOneHeld = m_isOneHeld && isHeld;
        m_changed.notify_all();
    }
    /// The next call, and no other.
    void holdNext() {
        const std::lock_guard lock(m_mutex);
        m_holdsNext = m_isOneHeld = true;
    }
    void cancel() {
        const std::lock_guard lock(m_mutex);
        m_isCancelled = true;
        m_changed.notify_all();
    }
    /// How many wait at present.
    [[nodiscard]] int waiting() const {
        const std::lock_guard lock(m_mutex);
        return m_waiting;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable_any m_changed;
    bool m_isHeld = false;
    bool m_holdsNext = false;
    bool m_isOneHeld = false;
    bool m_isCancelled = false;
    int m_waiting = 0;
};

} // namespace tavrine
