#pragma once

#include "base/Time.h"

#include <QObject>

namespace tavrine {

/// The real clock and the real main queue, on Qt's event loop. Made on the main thread.
class QtTime final : public Time {
public:
    [[nodiscard]] Date now() const override;
    [[nodiscard]] Seconds systemUptime() const override;
    void async(Work work) override;
    void asyncAfter(Seconds delay, Work work) override;
    [[nodiscard]] std::unique_ptr<Timer> repeat(Seconds interval, Work work) override;
    using Time::async;
    using Time::asyncAfter;

private:
    QObject m_mainThread; // posted events reach it there, whichever thread posts
};

} // namespace tavrine
