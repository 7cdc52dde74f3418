#include "look/MotionClock.h"

#include "look/Look.h"

#include <algorithm>

namespace tavrine::look {

MotionClock::MotionClock(Time &time) : m_time(time) {}

MotionClock::~MotionClock() {
    for (Motion *motion : m_motions)
        motion->m_clock = nullptr;
}

void MotionClock::add(Motion *motion) {
    m_motions.push_back(motion);
    if (!m_timer)
        m_timer = m_time.repeat(frame, [this] { tick(); });
}

void MotionClock::remove(Motion *motion) {
    std::erase(m_motions, motion);
    if (m_motions.empty())
        m_timer.reset();
}

void MotionClock::tick() {
    const Seconds moment = now();
    // A step may start, stop or destroy any motion, this one included.
    const std::vector<Motion *> motions = m_motions;
    for (Motion *motion : motions) {
        if (holds(motion))
            motion->advance(moment);
    }
}

bool MotionClock::holds(const Motion *motion) const {
    return std::find(m_motions.begin(), m_motions.end(), motion) != m_motions.end();
}

Motion::~Motion() {
    stop();
}

void Motion::stop() {
    if (MotionClock *clock = std::exchange(m_clock, nullptr))
        clock->remove(this);
}

void Motion::start(Seconds length, const Timing &timing, Step step, Done done) {
    start(
        length, [length, timing](Seconds time) { return length.count() > 0 ? timing.at(time / length) : 1.0; },
        std::move(step), std::move(done));
}

void Motion::start(const Spring &spring, Step step, Done done) {
    const Seconds length = spring.settled();
    start(
        length, [spring, length](Seconds time) { return time >= length ? 1.0 : spring.at(time); }, std::move(step),
        std::move(done));
}

void Motion::start(Seconds length, Curve curve, Step step, Done done) {
    stop();
    if (!Look::moves() || length.count() <= 0) {
        step(curve(length));
        if (done)
            done();
        return;
    }
    m_length = length;
    m_curve = std::move(curve);
    m_step = std::move(step);
    m_done = std::move(done);
    m_run = {};
    begin();
}

void Motion::run(std::function<bool(Seconds)> step) {
    stop();
    if (!Look::moves())
        return;
    m_run = std::make_shared<std::function<bool(Seconds)>>(std::move(step));
    begin();
}

void Motion::begin() {
    m_clock = &Look::current()->clock();
    m_started = m_last = m_clock->now();
    m_clock->add(this);
}

void Motion::advance(Seconds now) {
    // The wish may come while this is under way: it goes to the end with this frame, as a start would at once. What
    // runs without an end stands still.
    const bool moves = Look::moves();
    if (m_run && !moves) {
        stop();
        return;
    }
    if (m_run) {
        const auto step = m_run;
        const MotionClock *clock = m_clock;
        const Seconds passed = now - std::exchange(m_last, now);
        // After the step this may be gone, or at something else.
        if (!(*step)(passed) && clock->holds(this) && m_run == step)
            stop();
        return;
    }
    const Seconds passed = now - m_started;
    const Step step = m_step;
    if (passed < m_length && moves) {
        step(m_curve(passed));
        return;
    }
    const double last = m_curve(m_length);
    const Done done = std::move(m_done);
    stop();
    step(last);
    if (done)
        done();
}

} // namespace tavrine::look
