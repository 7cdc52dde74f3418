#pragma once

#include "upload/worker/ScriptValues.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace tavrine {

/// setTimeout and its like: functions of the script and the moments at which they are due, in the order of these and,
/// at the same moment, of their making.
class ScriptTimers {
public:
    using Clock = std::chrono::steady_clock;
    using Call = std::function<void(JSObjectRef function, const std::vector<JSValueRef> &arguments)>;

    /// The arguments are those of the script's call: function, delay, what the function is to be given. Zero when there
    /// are too many timers.
    [[nodiscard]] std::uint32_t add(JSContextRef context, std::size_t count, const JSValueRef arguments[],
                                    bool isRepeating);
    void remove(std::uint32_t id);
    void clear() { m_timers.clear(); }

    /// Runs through `call` what is due by `now`, not what that adds.
    void run(Clock::time_point now, const Call &call);
    [[nodiscard]] std::optional<Clock::time_point> next() const;

private:
    struct Timer {
        std::uint32_t id;
        std::optional<std::chrono::milliseconds> interval;
        std::vector<KeptValue> values; // the function and its arguments
    };

    std::multimap<Clock::time_point, Timer> m_timers;
    std::uint32_t m_lastId = 0;
};

} // namespace tavrine
