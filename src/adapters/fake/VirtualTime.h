#pragma once

#include "base/Time.h"

#include <map>
#include <mutex>

namespace tavrine {

/// A clock that stands still until a test moves it, and then stops at every moment at which something is due.
///
/// `async` may be called on any thread; work from other threads is run by the next `advance` or `runPending`.
class VirtualTime final : public Time {
public:
    /// 2026-01-31 12:00:00 UTC, unless a test wants another start.
    explicit VirtualTime(Date start = {1769860800.0});
    ~VirtualTime() override;

    [[nodiscard]] Date now() const override;
    [[nodiscard]] Seconds systemUptime() const override;
    void async(Work work) override;
    void asyncAfter(Seconds delay, Work work) override;
    [[nodiscard]] std::unique_ptr<Timer> repeat(Seconds interval, Work work) override;
    using Time::async;
    using Time::asyncAfter;

    /// Moves the clock by `length` and runs, in order, all that falls due on the way, what is due at the end included.
    void advance(Seconds length);

    /// Runs what is due now, and what that hands in for now.
    void runPending() { advance(Seconds{0}); }

    /// Moves the wall clock alone, as a person or a time server does: nothing falls due by it.
    void setWallClock(Date date);

    void setSystemUptime(Seconds uptime);

    /// Timers that are running.
    [[nodiscard]] int timerCount() const;

private:
    struct Shared;
    class RepeatingTimer;
    std::shared_ptr<Shared> m_shared;
};

} // namespace tavrine
