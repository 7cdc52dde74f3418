#include "upload/worker/ScriptTimers.h"

#include "upload/worker/WorkerLimits.h"

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

/// As browsers take it: what is no delay is none, and what is beyond 24 days is one millisecond.
std::chrono::milliseconds delayOf(JSContextRef context, JSValueRef value) {
    const double delay = JSValueToNumber(context, value, nullptr);
    if (!(delay >= 1))
        return std::chrono::milliseconds(0);
    return std::chrono::milliseconds(delay > 2147483647.0 ? 1 : static_cast<std::int64_t>(delay));
}

} // namespace

std::uint32_t ScriptTimers::add(JSContextRef context, std::size_t count, const JSValueRef arguments[],
                                bool isRepeating) {
    if (m_timers.size() >= limits::timers)
        return 0;
    const auto delay = count > 1 ? delayOf(context, arguments[1]) : std::chrono::milliseconds(0);
    Timer timer{++m_lastId, std::nullopt, {}};
    if (isRepeating)
        timer.interval = std::max(delay, std::chrono::milliseconds(1));
    timer.values.emplace_back(context, arguments[0]);
    for (std::size_t i = 2; i < count; ++i)
        timer.values.emplace_back(context, arguments[i]);
    const std::uint32_t id = timer.id;
    m_timers.emplace(Clock::now() + delay, std::move(timer));
    return id;
}

void ScriptTimers::remove(std::uint32_t id) {
    const auto found =
        std::find_if(m_timers.begin(), m_timers.end(), [id](const auto &at) { return at.second.id == id; });
    if (found != m_timers.end())
        m_timers.erase(found);
}

void ScriptTimers::run(Clock::time_point now, const Call &call) {
    const std::uint32_t lastId = m_lastId;
    while (true) {
        const auto due =
            std::find_if(m_timers.begin(), m_timers.end(), [lastId](const auto &at) { return at.second.id <= lastId; });
        if (due == m_timers.end() || due->first > now)
            return;
        // Out of the list while it runs, unless it repeats: then it goes back first, so that it can be removed by
        // itself.
        auto node = m_timers.extract(due);
        std::vector<JSValueRef> arguments;
        for (std::size_t i = 1; i < node.mapped().values.size(); ++i)
            arguments.push_back(node.mapped().values[i].get());
        JSObjectRef function = node.mapped().values.front().object();
        if (!node.mapped().interval) {
            call(function, arguments);
            continue;
        }
        node.key() = std::max(node.key() + *node.mapped().interval, now + std::chrono::milliseconds(1));
        m_timers.insert(std::move(node));
        call(function, arguments);
    }
}

std::optional<ScriptTimers::Clock::time_point> ScriptTimers::next() const {
    return m_timers.empty() ? std::nullopt : std::optional(m_timers.begin()->first);
}

} // namespace tavrine
