#pragma once

#include "ports/Calendar.h"

#include <QtGlobal>

#include <compare>

namespace tavrine {

/// A time of the day on the clock on the wall, to the minute, whatever the day and the time zone.
struct TimeOfDay {
    int hour = 0;
    int minute = 0;
    constexpr auto operator<=>(const TimeOfDay &) const = default;
};

inline constexpr int secondsPerDay = 86'400;

[[nodiscard]] constexpr qint64 secondsSinceMidnight(TimeOfDay time) {
    return time.hour * 3600 + time.minute * 60;
}

/// The minute within which a stored number of seconds falls; `fallback` for a number that is in no day.
[[nodiscard]] constexpr TimeOfDay timeOfDay(qint64 secondsSinceMidnight, TimeOfDay fallback) {
    if (secondsSinceMidnight < 0 || secondsSinceMidnight >= secondsPerDay)
        return fallback;
    const int minutes = static_cast<int>(secondsSinceMidnight / 60);
    return {minutes / 60, minutes % 60};
}

/// From `start` up to `end`, over midnight when it ends earlier than it starts. Empty when both are the same.
[[nodiscard]] constexpr bool isInside(TimeOfDay start, TimeOfDay end, TimeOfDay time) {
    return end >= start ? start <= time && time < end : time >= start || time < end;
}

[[nodiscard]] constexpr bool isWeekend(const DateComponents &components) {
    constexpr int sunday = 1;
    constexpr int saturday = 7;
    return components.weekday == sunday || components.weekday == saturday;
}

} // namespace tavrine
