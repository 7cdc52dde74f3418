#pragma once

#include "ports/ScreenStream.h"

#include <algorithm>
#include <optional>

namespace tavrine {

/// Says when a stream may look at the screen again and which moment a frame stands for. A value; times are of one
/// monotonic clock.
///
/// A frame that was waited for stands for the moment for which it was waited: what the scheduler takes on top would add
/// up, and 60 frames a second become 59.
class FramePacer {
public:
    explicit FramePacer(std::chrono::nanoseconds interval) : m_interval(interval) {}

    /// When something that is to be seen since `needed` may be looked at.
    [[nodiscard]] MediaTime due(MediaTime needed) const { return m_next ? std::max(*m_next, needed) : needed; }

    /// A look at `now`, at what was to be seen since `needed`: the moment that its frame stands for.
    MediaTime look(MediaTime now, MediaTime needed) {
        const MediaTime wanted = due(needed);
        const MediaTime moment = needed < wanted && now - wanted < m_interval / 2 ? wanted : now;
        m_next = moment + m_interval;
        return moment;
    }

private:
    std::chrono::nanoseconds m_interval;
    std::optional<MediaTime> m_next;
};

} // namespace tavrine
