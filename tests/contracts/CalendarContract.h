#pragma once

#include "ports/Calendar.h"

#include <QDateTime>

#include <gtest/gtest.h>

namespace tavrine::test {

/// What all calendars keep. `Wall` has: Calendar &calendar(); void setTimeZone(const char *name).
template <class Wall>
class CalendarContract : public testing::Test {
public:
    void expect(const char *moment, int weekday, int hour, int minute) {
        const QDateTime date = QDateTime::fromString(QLatin1String(moment), Qt::ISODate);
        const DateComponents expected{weekday, hour, minute};
        EXPECT_EQ(wall.calendar().components({static_cast<double>(date.toSecsSinceEpoch())}), expected) << moment;
    }
    Wall wall;
};

TYPED_TEST_SUITE_P(CalendarContract);

TYPED_TEST_P(CalendarContract, theWeekBeginsOnSundayWithOne) {
    this->wall.setTimeZone("UTC");
    this->expect("2026-02-01T00:00:00Z", 1, 0, 0);
    this->expect("2026-02-02T09:07:59Z", 2, 9, 7);
    this->expect("2026-02-07T23:59:59Z", 7, 23, 59);
}

TYPED_TEST_P(CalendarContract, anotherZoneCountsAtOnce) {
    this->wall.setTimeZone("Pacific/Auckland");
    this->expect("2026-02-06T23:00:00Z", 7, 12, 0);
    this->wall.setTimeZone("America/New_York");
    this->expect("2026-02-06T23:00:00Z", 6, 18, 0);
    this->wall.setTimeZone("Asia/Kathmandu");
    this->expect("2026-02-06T23:00:00Z", 7, 4, 45);
}

TYPED_TEST_P(CalendarContract, theDaysOnWhichClocksAreChangedAreKnown) {
    this->wall.setTimeZone("Europe/Berlin");
    this->expect("2026-03-29T00:59:59Z", 1, 1, 59);
    this->expect("2026-03-29T01:00:00Z", 1, 3, 0);
    this->expect("2026-10-25T00:59:00Z", 1, 2, 59);
    this->expect("2026-10-25T01:00:00Z", 1, 2, 0);
}

TYPED_TEST_P(CalendarContract, fractionsAndTimesBefore1970AreInTheMinuteTheyFallIn) {
    this->wall.setTimeZone("UTC");
    EXPECT_EQ(this->wall.calendar().components({59.999}), (DateComponents{5, 0, 0}));
    EXPECT_EQ(this->wall.calendar().components({-0.001}), (DateComponents{4, 23, 59}));
}

REGISTER_TYPED_TEST_SUITE_P(CalendarContract, theWeekBeginsOnSundayWithOne, anotherZoneCountsAtOnce,
                            theDaysOnWhichClocksAreChangedAreKnown,
                            fractionsAndTimesBefore1970AreInTheMinuteTheyFallIn);

} // namespace tavrine::test
