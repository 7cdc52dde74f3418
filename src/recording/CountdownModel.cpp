#include "recording/CountdownModel.h"

#include "base/Time.h"

#include <utility>

namespace tavrine {

CountdownModel::CountdownModel(int initialSeconds, Time &time, std::function<void()> onFinish)
    : m_time(time), m_onFinish(std::move(onFinish)), m_currentCount(initialSeconds) {}

CountdownModel::~CountdownModel() = default;

void CountdownModel::appear() {
    m_timer = m_time.repeat(tickInterval, [this] { tick(); });
}

void CountdownModel::stop() {
    m_timer.reset();
}

void CountdownModel::tick() {
    if (m_currentCount >= 2) {
        --m_currentCount;
        Q_EMIT ticked();
        return;
    }
    // The timer goes with its own call under way, so that call must need nothing of it afterwards.
    const auto onFinish = m_onFinish;
    m_timer.reset();
    onFinish();
}

} // namespace tavrine
