#pragma once

#include <chrono>
#include <deque>
#include <optional>

namespace tavrine {

/// Keeps us out of a quarrel: two programs that each restore the clipboard as soon as they lose it would never end.
///
/// More than `maxChanges` changes of ownership within `window` engage the brake; `window` without any releases it.
class ReclaimBrake {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    static constexpr int maxChanges = 10;
    static constexpr std::chrono::seconds window{1};

    void ownershipChanged(TimePoint now) {
        if (m_isEngaged && isReleased(now)) // calm that nobody asked about counts too
            m_changes.clear();
        while (!m_changes.empty() && now - m_changes.front() > window)
            m_changes.pop_front();
        m_changes.push_back(now);
        if (m_changes.size() > maxChanges) {
            m_isEngaged = true;
            m_changes.pop_front();
        }
        m_last = now;
    }

    [[nodiscard]] bool isReleased(TimePoint now) {
        if (m_isEngaged && now - m_last >= window) {
            m_isEngaged = false;
            m_changes.clear();
        }
        return !m_isEngaged;
    }

    /// When an engaged brake lets go, if nothing happens until then.
    [[nodiscard]] std::optional<TimePoint> releaseTime() const {
        return m_isEngaged ? std::optional(m_last + window) : std::nullopt;
    }

private:
    std::deque<TimePoint> m_changes;
    TimePoint m_last;
    bool m_isEngaged = false;
};

} // namespace tavrine
