#pragma once

#include <mutex>

namespace tavrine {

/// Lets one run report exactly once, whichever of its normal end and its watchdog gets there first. Any thread.
class FinishOnceBox {
public:
    /// True for the first caller only.
    [[nodiscard]] bool finish() {
        const std::lock_guard guard(m_lock);
        const bool isFirst = !m_finished;
        m_finished = true;
        return isFirst;
    }

private:
    bool m_finished = false;
    std::mutex m_lock;
};

} // namespace tavrine
