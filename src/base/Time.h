#pragma once

#include "base/Date.h"

#include <functional>
#include <memory>

class QObject;

namespace tavrine {

/// A running timer. Destroying it is invalidating it: its work is not called again.
class Timer {
public:
    virtual ~Timer() = default;
};

/// The clock and the main queue: everything in the system that happens later happens through here.
///
/// One instance lives as long as the process. Work is run on the main thread, in the order of the moments at which it
/// is due, and work due at the same moment in the order in which it was handed in. `async` may be called on any
/// thread; everything else belongs to the main thread.
class Time {
public:
    using Work = std::function<void()>;

    virtual ~Time();

    [[nodiscard]] virtual Date now() const = 0;

    /// Seconds since the machine was booted, the time it slept included.
    [[nodiscard]] virtual Seconds systemUptime() const = 0;

    /// Runs `work` in a later turn of the main queue, never within the call.
    virtual void async(Work work) = 0;

    /// Runs `work` once, `delay` seconds from now. There is no way to cancel it.
    virtual void asyncAfter(Seconds delay, Work work) = 0;

    /// Calls `work` every `interval` seconds, the first time one interval from now, until the timer is destroyed.
    [[nodiscard]] virtual std::unique_ptr<Timer> repeat(Seconds interval, Work work) = 0;

    /// The same, but the work is dropped when `owner` is gone by the time it is due.
    void async(QObject *owner, Work work);
    void asyncAfter(Seconds delay, QObject *owner, Work work);
};

} // namespace tavrine
