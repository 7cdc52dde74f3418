#pragma once

#include "base/Date.h"

namespace tavrine {

/// A moment as the clock on the wall and the calendar beside it show it.
struct DateComponents {
    int weekday = 1; ///< 1 is Sunday, 7 is Saturday
    int hour = 0;
    int minute = 0;
    bool operator==(const DateComponents &) const = default;
};

/// The person's calendar: local time, by the zone that is set at the moment of the question. Main thread.
class Calendar {
public:
    virtual ~Calendar() = default;
    [[nodiscard]] virtual DateComponents components(Date date) const = 0;
};

} // namespace tavrine
