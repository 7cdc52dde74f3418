#include "adapters/fake/VirtualTime.h"

namespace tavrine {

// The elapsed time counts from 0; the wall clock is an offset to it, so that setting the clock moves nothing due.
struct VirtualTime::Shared {
    using Key = std::pair<double, quint64>; // due moment, then order of arrival

    std::mutex mutex;   // for what is due, and for the clock; its mover looks at it without
    double elapsed = 0; // moved on the main thread
    double wallClockAtZero = 0;
    Seconds uptimeAtZero{86400.0};
    quint64 arrivals = 0;
    int timers = 0;
    std::map<Key, Work> due;

    void add(double moment, Work work) {
        const std::lock_guard lock(mutex);
        due.emplace(Key{moment, arrivals++}, std::move(work));
    }
    /// Of any thread.
    void addAfter(Seconds delay, Work work) {
        const std::lock_guard lock(mutex);
        due.emplace(Key{elapsed + std::max(0.0, delay.count()), arrivals++}, std::move(work));
    }
    void moveTo(double moment) {
        const std::lock_guard lock(mutex);
        elapsed = std::max(elapsed, moment);
    }
};

class VirtualTime::RepeatingTimer final : public Timer {
public:
    RepeatingTimer(std::shared_ptr<Shared> shared, Seconds interval, Work work)
        : m_shared(std::move(shared)), m_state(std::make_shared<State>(State{interval.count(), std::move(work)})) {
        ++m_shared->timers;
        schedule(m_shared, m_state, m_shared->elapsed + m_state->interval);
    }
    ~RepeatingTimer() override { --m_shared->timers; }

private:
    struct State {
        double interval;
        Work work;
    };

    static void schedule(const std::weak_ptr<Shared> &shared, const std::weak_ptr<State> &weakState, double moment) {
        const auto time = shared.lock();
        time->add(moment, [shared, weakState, moment] {
            const auto state = weakState.lock();
            if (!state)
                return;
            schedule(shared, weakState, moment + state->interval);
            state->work();
        });
    }

    std::shared_ptr<Shared> m_shared;
    std::shared_ptr<State> m_state;
};

VirtualTime::VirtualTime(Date start) : m_shared(std::make_shared<Shared>()) {
    m_shared->wallClockAtZero = start.secondsSince1970;
}

VirtualTime::~VirtualTime() = default;

Date VirtualTime::now() const {
    return {m_shared->wallClockAtZero + m_shared->elapsed};
}

Seconds VirtualTime::systemUptime() const {
    return m_shared->uptimeAtZero + Seconds{m_shared->elapsed};
}

void VirtualTime::async(Work work) {
    asyncAfter(Seconds{0}, std::move(work));
}

void VirtualTime::asyncAfter(Seconds delay, Work work) {
    m_shared->addAfter(delay, std::move(work));
}

std::unique_ptr<Timer> VirtualTime::repeat(Seconds interval, Work work) {
    return std::make_unique<RepeatingTimer>(m_shared, interval, std::move(work));
}

void VirtualTime::advance(Seconds length) {
    // A hair's breadth, so that ten steps of 0.1 s reach what is due after 1 s.
    constexpr double rounding = 1e-9;
    const double end = m_shared->elapsed + length.count();
    for (;;) {
        Work work;
        {
            const std::lock_guard lock(m_shared->mutex);
            const auto next = m_shared->due.begin();
            if (next == m_shared->due.end() || next->first.first > end + rounding)
                break;
            m_shared->elapsed = std::max(m_shared->elapsed, next->first.first);
            work = std::move(next->second);
            m_shared->due.erase(next);
        }
        work();
    }
    m_shared->moveTo(end);
}

void VirtualTime::setWallClock(Date date) {
    m_shared->wallClockAtZero = date.secondsSince1970 - m_shared->elapsed;
}

void VirtualTime::setSystemUptime(Seconds uptime) {
    m_shared->uptimeAtZero = uptime - Seconds{m_shared->elapsed};
}

int VirtualTime::timerCount() const {
    return m_shared->timers;
}

} // namespace tavrine
