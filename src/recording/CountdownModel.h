#pragma once

#include "base/Date.h"

#include <QObject>

#include <functional>
#include <memory>

namespace tavrine {

class Time;
class Timer;

/// The seconds before a recording. Main thread; held by its view and by the recorder.
class CountdownModel final : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds tickInterval{1.0};

    CountdownModel(int initialSeconds, Time &time, std::function<void()> onFinish);
    ~CountdownModel() override;

    void appear();
    /// It will not finish any more.
    void stop();
    [[nodiscard]] int currentCount() const { return m_currentCount; }

Q_SIGNALS:
    void ticked(); ///< with another count

private:
    void tick();

    Time &m_time;
    std::function<void()> m_onFinish;
    std::unique_ptr<Timer> m_timer;
    int m_currentCount;
};

} // namespace tavrine
