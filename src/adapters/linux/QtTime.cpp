#include "adapters/linux/QtTime.h"

#include <QTimer>

#include <chrono>
#include <ctime>

namespace tavrine {
namespace {

class QtTimer final : public Timer {
public:
    QtTimer(std::chrono::milliseconds interval, Time::Work work) {
        // Idle timers may share their wake-ups; below a fifth of a second lateness would be seen or felt.
        m_timer.setTimerType(interval < std::chrono::milliseconds(200) ? Qt::PreciseTimer : Qt::CoarseTimer);
        m_timer.callOnTimeout(std::move(work));
        m_timer.start(interval);
    }

private:
    QTimer m_timer;
};

std::chrono::milliseconds milliseconds(Seconds seconds) {
    return std::chrono::ceil<std::chrono::milliseconds>(seconds);
}

} // namespace

Date QtTime::now() const {
    return {std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count()};
}

Seconds QtTime::systemUptime() const {
    timespec uptime{};
    clock_gettime(CLOCK_BOOTTIME, &uptime); // counts through suspend, as the time since the last boot must
    return std::chrono::seconds(uptime.tv_sec) + std::chrono::nanoseconds(uptime.tv_nsec);
}

void QtTime::async(Work work) {
    QMetaObject::invokeMethod(&m_mainThread, std::move(work), Qt::QueuedConnection);
}

void QtTime::asyncAfter(Seconds delay, Work work) {
    QTimer::singleShot(milliseconds(delay), Qt::PreciseTimer, &m_mainThread, std::move(work));
}

std::unique_ptr<Timer> QtTime::repeat(Seconds interval, Work work) {
    return std::make_unique<QtTimer>(milliseconds(interval), std::move(work));
}

} // namespace tavrine
