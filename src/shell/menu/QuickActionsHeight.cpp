#include "shell/menu/QuickActionsHeight.h"

#include "look/Motion.h"

#include <algorithm>
#include <cmath>

namespace tavrine {

QuickActionsHeight::QuickActionsHeight(Time &time, std::function<std::optional<double>()> measure, QObject *parent)
    : QObject(parent), m_time(time), m_measure(std::move(measure)) {}

QuickActionsHeight::~QuickActionsHeight() = default;

std::optional<double> QuickActionsHeight::target() const {
    const auto measured = m_measure();
    return measured ? std::optional(std::max(smallest, *measured)) : std::nullopt;
}

void QuickActionsHeight::set(double height) {
    m_height = height;
    Q_EMIT changed();
}

void QuickActionsHeight::setNow() {
    if (const auto height = target())
        set(*height);
}

void QuickActionsHeight::setSoon() {
    m_time.asyncAfter(measureDelay, this, [this] {
        if (isAnimating())
            animate(panelLength); // a jump to the end would be taken back by the next step
        else
            setNow();
    });
}

void QuickActionsHeight::animate(Seconds duration) {
    m_time.asyncAfter(settleDelay, this, [this, duration] {
        const auto to = target();
        if (!to || std::abs(*to - m_height) <= smallestDifference)
            return;
        m_panelHeightTimer =
            m_time.repeat(step, [this, duration, from = m_height, to = *to, began = m_time.systemUptime()] {
                const double part = std::min(1.0, (m_time.systemUptime() - began) / duration);
                // Ended first: whoever hears of the last height may begin anew.
                const auto ended = part >= 1 ? std::move(m_panelHeightTimer) : nullptr;
                set(from + (to - from) * look::cubicInOut(part));
            });
    });
}

} // namespace tavrine
