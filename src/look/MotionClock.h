#pragma once

#include "base/Time.h"
#include "look/Motion.h"

#include <functional>
#include <memory>
#include <vector>

namespace tavrine::look {

class Motion;

/// The one clock of all motions. It ticks while something moves, and is not there at all when nothing does. Owned by
/// Look; main thread only.
class MotionClock {
public:
    /// 60 frames a second; timers count in whole milliseconds.
    static constexpr Seconds frame{0.016};

    explicit MotionClock(Time &time);
    ~MotionClock();
    MotionClock(const MotionClock &) = delete;
    MotionClock &operator=(const MotionClock &) = delete;

    [[nodiscard]] bool isTicking() const { return m_timer != nullptr; }
    [[nodiscard]] Seconds now() const { return m_time.systemUptime(); }

private:
    friend class Motion;
    void add(Motion *motion);
    void remove(Motion *motion);
    void tick();
    [[nodiscard]] bool holds(const Motion *motion) const;

    Time &m_time;
    std::unique_ptr<Timer> m_timer;
    std::vector<Motion *> m_motions;
};

/// One thing that can move, a member of what it moves. Starting it again drops what was under way; destroying it stops
/// it, and neither calls `done`.
///
/// Where nothing may move (the desktop asks for reduced motion, or no Look is there), a start goes to the end at once:
/// `step` gets the last value and `done` is called before the start returns. Both may destroy the Motion.
class Motion {
public:
    using Step = std::function<void(double value)>;
    using Done = std::function<void()>;
    /// A value for the time since the start.
    using Curve = std::function<double(Seconds)>;

    Motion() = default;
    ~Motion();
    Motion(const Motion &) = delete;
    Motion &operator=(const Motion &) = delete;

    /// Steps from 0 to 1 along `timing`; the last step has exactly 1.
    void start(Seconds length, const Timing &timing, Step step, Done done = {});
    /// Steps from 0 to 1 with the spring; the last step has exactly 1.
    void start(const Spring &spring, Step step, Done done = {});
    /// Steps along any curve; the last step has the value at `length`.
    void start(Seconds length, Curve curve, Step step, Done done = {});
    /// Steps with the seconds since the last frame, until `step` answers false. For what goes on without an end, such
    /// as a spinner. Does nothing where nothing may move.
    void run(std::function<bool(Seconds sinceLastFrame)> step);
    void stop();
    [[nodiscard]] bool isRunning() const { return m_clock != nullptr; }

private:
    friend class MotionClock;
    void advance(Seconds now);
    void begin();

    MotionClock *m_clock = nullptr;
    Seconds m_started{0};
    Seconds m_last{0};
    Seconds m_length{0};
    Curve m_curve;
    Step m_step;
    Done m_done;
    std::shared_ptr<std::function<bool(Seconds)>> m_run; // kept alive through its own call
};

} // namespace tavrine::look
