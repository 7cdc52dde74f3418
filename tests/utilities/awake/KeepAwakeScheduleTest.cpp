// The daily schedule.
#include "AwakeFixture.h"

namespace tavrine {
namespace {

TEST(Schedule, overMidnightIsInsideFromItsStartUpToItsEnd) {
    const TimeOfDay start{22, 0};
    const TimeOfDay end{6, 0};
    EXPECT_TRUE(isInside(start, end, {23, 0}));
    EXPECT_TRUE(isInside(start, end, {5, 59}));
    EXPECT_FALSE(isInside(start, end, {6, 0}));
    EXPECT_FALSE(isInside(start, end, {21, 59}));
    EXPECT_TRUE(isInside(start, end, {22, 0}));
    EXPECT_TRUE(isInside(start, end, {0, 0}));
}

TEST(Schedule, withinADayIsInsideFromItsStartUpToItsEnd) {
    EXPECT_FALSE(isInside({9, 0}, {18, 0}, {8, 59}));
    EXPECT_TRUE(isInside({9, 0}, {18, 0}, {9, 0}));
    EXPECT_TRUE(isInside({9, 0}, {18, 0}, {17, 59}));
    EXPECT_FALSE(isInside({9, 0}, {18, 0}, {18, 0}));
}

TEST(Schedule, thatStartsWhenItEndsIsNeverInside) {
    for (int minute = 0; minute < 24 * 60; ++minute)
        EXPECT_FALSE(isInside({9, 0}, {9, 0}, {minute / 60, minute % 60})) << minute;
}

class KeepAwakeSchedule : public AwakeFixture {
protected:
    /// Sets the clock, and the schedule on a clock whose seconds are those of its next check.
    void setClock(const char *date) { time.setWallClock(utc(date)); }
    /// One check of the schedule.
    void check() { pass(60s); }
    void schedule(TimeOfDay start, TimeOfDay end) {
        after([&] {
            manager->setScheduleStart(start);
            manager->setScheduleEnd(end);
        });
    }
    /// Whether the check at that moment leaves the machine awake.
    bool isAwakeAt(const char *date) {
        setClock(date);
        time.setWallClock(time.now() - Seconds{60});
        check();
        return manager->isAwake();
    }
};

TEST_F(KeepAwakeSchedule, switchingItOnInsideChecksAtOnceAndThenEveryMinute) {
    after([&] { manager->setScheduleEnabled(true); });
    EXPECT_TRUE(manager->isAwake());
    after([&] { manager->disable(); });
    pass(59s);
    EXPECT_FALSE(manager->isAwake());
    pass(1s);
    EXPECT_TRUE(manager->isAwake()) << "the schedule owns the state";
}

TEST_F(KeepAwakeSchedule, switchingItOnOutsideEndsASession) {
    schedule({13, 0}, {14, 0});
    switchOn();
    after([&] { manager->setScheduleEnabled(true); });
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, switchingItOffInsideKeepsTheAssertion) {
    after([&] { manager->setScheduleEnabled(true); });
    const int created = assertions.createdCount();
    after([&] { manager->setScheduleEnabled(false); });
    EXPECT_TRUE(manager->isAwake());
    EXPECT_EQ(assertions.held().size(), 1U);
    EXPECT_EQ(assertions.createdCount(), created) << "the same, not another";
    setClock("2026-02-02 20:00");
    pass(10min);
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, aLaunchChecksAMinuteLater) {
    after([&] { manager->setScheduleEnabled(true); });
    make();
    EXPECT_FALSE(manager->isAwake());
    pass(59s);
    EXPECT_FALSE(manager->isAwake());
    pass(1s);
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, aLaunchWithoutAScheduleNeverChecks) {
    pass(1h);
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, aPauseThatLastsPastItsEndComesBackWithPowerUntilTheNextCheck) {
    setPluggedIn(true);
    after([&] { manager->setChargingOnly(true); });
    after([&] { manager->setScheduleEnabled(true); });
    setPluggedIn(false);
    pass(10s);
    ASSERT_TRUE(manager->autoDisabledForBattery());
    setClock("2026-02-02 18:00");
    check();
    EXPECT_FALSE(manager->isAwake());
    EXPECT_TRUE(manager->autoDisabledForBattery()) << "only what is on is switched off";
    setPluggedIn(true);
    pass(10s);
    EXPECT_TRUE(manager->isAwake());
    check();
    EXPECT_FALSE(manager->isAwake());
    EXPECT_FALSE(manager->autoDisabledForBattery());
    pass(5min);
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, isKeptToTheMinuteAtBothEnds) {
    after([&] { manager->setScheduleEnabled(true); });
    EXPECT_FALSE(isAwakeAt("2026-02-03 08:59"));
    EXPECT_TRUE(isAwakeAt("2026-02-03 09:00"));
    EXPECT_TRUE(isAwakeAt("2026-02-03 17:59"));
    EXPECT_FALSE(isAwakeAt("2026-02-03 18:00"));
}

TEST_F(KeepAwakeSchedule, secondsAreDropped) {
    after([&] { manager->setScheduleEnabled(true); });
    time.setWallClock(utc("2026-02-03 08:59") + Seconds{59.9 - 60});
    check();
    EXPECT_FALSE(manager->isAwake());
    time.setWallClock(utc("2026-02-03 17:59") + Seconds{59.9 - 60});
    check();
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, overMidnightIsOnThroughTheNight) {
    schedule({22, 0}, {6, 0});
    after([&] { manager->setScheduleEnabled(true); });
    EXPECT_FALSE(isAwakeAt("2026-02-03 21:59"));
    EXPECT_TRUE(isAwakeAt("2026-02-03 23:00"));
    EXPECT_TRUE(isAwakeAt("2026-02-04 05:59"));
    EXPECT_FALSE(isAwakeAt("2026-02-04 06:00"));
}

TEST_F(KeepAwakeSchedule, thatIsEmptySwitchesOffAndNeverOn) {
    schedule({12, 0}, {12, 0});
    switchOn();
    after([&] { manager->setScheduleEnabled(true); });
    EXPECT_FALSE(manager->isAwake());
    pass(24h);
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, onWeekdaysOnlyTheWeekendIsOff) {
    after([&] { manager->setScheduleEnabled(true); });
    EXPECT_TRUE(isAwakeAt("2026-02-06 12:00")); // a Friday
    EXPECT_FALSE(isAwakeAt("2026-02-07 12:00"));
    EXPECT_FALSE(isAwakeAt("2026-02-08 12:00"));
    EXPECT_TRUE(isAwakeAt("2026-02-09 12:00"));
    after([&] { manager->setWeekdaysOnly(false); });
    EXPECT_TRUE(isAwakeAt("2026-02-14 12:00"));
    EXPECT_TRUE(isAwakeAt("2026-02-15 12:00"));
}

TEST_F(KeepAwakeSchedule, onASaturdayASessionOfThePersonsEndsWithTheNextCheckThoughItIsItsHour) {
    after([&] { manager->setScheduleEnabled(true); });
    EXPECT_FALSE(isAwakeAt("2026-02-07 12:00"));
    switchOn();
    pass(59s);
    EXPECT_TRUE(manager->isAwake());
    pass(1s);
    EXPECT_FALSE(manager->isAwake());
    EXPECT_FALSE(manager->autoDisabledForBattery()); // so that no charger brings it back
}

TEST_F(KeepAwakeSchedule, theDaysThatCountAreThoseOfTheNextCheck) {
    after([&] {
        manager->setWeekdaysOnly(false);
        manager->setScheduleEnabled(true);
    });
    ASSERT_TRUE(isAwakeAt("2026-02-07 12:00"));
    after([&] { manager->setWeekdaysOnly(true); });
    pass(59s);
    EXPECT_TRUE(manager->isAwake());
    pass(1s);
    EXPECT_FALSE(manager->isAwake());
    after([&] { manager->setWeekdaysOnly(false); });
    pass(59s);
    EXPECT_FALSE(manager->isAwake());
    pass(1s);
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, aSaturdayThatIsSwitchedOnIsCheckedAtOnce) {
    setClock("2026-02-07 12:00");
    switchOn();
    after([&] { manager->setScheduleEnabled(true); });
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, aNightThatBeganOnFridayStopsOnSaturdayMorning) {
    schedule({22, 0}, {6, 0});
    after([&] { manager->setScheduleEnabled(true); });
    EXPECT_TRUE(isAwakeAt("2026-02-06 23:59"));
    EXPECT_FALSE(isAwakeAt("2026-02-07 00:00"));
    EXPECT_TRUE(isAwakeAt("2026-02-09 00:00"));
}

TEST_F(KeepAwakeSchedule, aSessionOfThePersonsOutsideEndsWithTheNextCheck) {
    schedule({13, 0}, {14, 0});
    after([&] { manager->setScheduleEnabled(true); });
    switchOn();
    pass(59s);
    EXPECT_TRUE(manager->isAwake());
    pass(1s);
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, otherTimesCountFromTheNextCheckOn) {
    after([&] { manager->setScheduleEnabled(true); });
    schedule({13, 0}, {14, 0});
    EXPECT_TRUE(manager->isAwake());
    check();
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, whatIsHeldIsNotTakenAnew) {
    after([&] { manager->setScheduleEnabled(true); });
    pass(30min);
    EXPECT_EQ(assertions.createdCount(), 1);
}

TEST_F(KeepAwakeSchedule, aTimedSessionWithinItBeginsAnew) {
    after([&] { manager->setDuration(KeepAwakeDuration::fifteenMinutes); });
    after([&] { manager->setScheduleEnabled(true); });
    pass(15min);
    pass(60s);
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, insideItAPauseByTheBatteryGoesOn) {
    setPluggedIn(true);
    after([&] { manager->setChargingOnly(true); });
    after([&] { manager->setScheduleEnabled(true); });
    setPluggedIn(false);
    pass(5min);
    EXPECT_FALSE(manager->isAwake());
    EXPECT_TRUE(manager->autoDisabledForBattery());
    setPluggedIn(true);
    pass(10s);
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, onBatteryInLidClosedModeTheWishForTheWarningStandsOnce) {
    setPluggedIn(false);
    after([&] {
        manager->setChargingOnly(true);
        manager->setMode(KeepAwakeMode::lidClosed);
    });
    int wishes = 0;
    QObject::connect(manager.get(), &KeepAwakeManager::showLidClosedNoPowerWarningChanged, manager.get(),
                     [&] { ++wishes; });
    after([&] { manager->setScheduleEnabled(true); });
    pass(10min);
    EXPECT_EQ(wishes, 1);
    EXPECT_FALSE(manager->isAwake());
}

// Days that are longer and shorter, zones, and clocks that are set.

TEST_F(KeepAwakeSchedule, isKeptByTheClockOnTheWallOnTheShortDay) {
    calendar.setTimeZone("Europe/Berlin"); // from 02:00 to 03:00 on 2026-03-29, a Sunday
    after([&] {
        manager->setWeekdaysOnly(false);
        manager->setScheduleEnabled(true);
    });
    EXPECT_FALSE(isAwakeAt("2026-03-28 07:59"));
    EXPECT_TRUE(isAwakeAt("2026-03-28 08:00"));
    EXPECT_FALSE(isAwakeAt("2026-03-29 06:59"));
    EXPECT_TRUE(isAwakeAt("2026-03-29 07:00"));
    EXPECT_TRUE(isAwakeAt("2026-03-29 15:59"));
    EXPECT_FALSE(isAwakeAt("2026-03-29 16:00"));
}

TEST_F(KeepAwakeSchedule, thatStartsInTheHourThatIsLeftOutStartsWithTheNext) {
    calendar.setTimeZone("Europe/Berlin");
    schedule({2, 30}, {4, 0});
    after([&] {
        manager->setWeekdaysOnly(false);
        manager->setScheduleEnabled(true);
    });
    EXPECT_FALSE(isAwakeAt("2026-03-29 00:59"));
    EXPECT_TRUE(isAwakeAt("2026-03-29 01:00")); // 03:00 on the wall
    EXPECT_FALSE(isAwakeAt("2026-03-29 02:00"));
}

TEST_F(KeepAwakeSchedule, isOnTwiceWhenItsHourComesTwice) {
    calendar.setTimeZone("Europe/Berlin"); // from 03:00 back to 02:00 on 2026-10-25
    schedule({2, 0}, {2, 30});
    after([&] {
        manager->setWeekdaysOnly(false);
        manager->setScheduleEnabled(true);
    });
    EXPECT_TRUE(isAwakeAt("2026-10-25 00:15"));
    EXPECT_FALSE(isAwakeAt("2026-10-25 00:30"));
    EXPECT_TRUE(isAwakeAt("2026-10-25 01:15"));
    EXPECT_FALSE(isAwakeAt("2026-10-25 01:30"));
}

TEST_F(KeepAwakeSchedule, keepsItsTimesInAnotherZone) {
    after([&] { manager->setScheduleEnabled(true); });
    ASSERT_TRUE(isAwakeAt("2026-02-03 09:30"));
    calendar.setTimeZone("America/New_York"); // 04:30 there
    check();
    EXPECT_FALSE(manager->isAwake());
    EXPECT_EQ(manager->scheduleStart(), (TimeOfDay{9, 0}));
    EXPECT_FALSE(isAwakeAt("2026-02-03 13:59"));
    EXPECT_TRUE(isAwakeAt("2026-02-03 14:00"));
}

TEST_F(KeepAwakeSchedule, theDayOfTheWeekIsThatOfTheZone) {
    calendar.setTimeZone("Pacific/Auckland"); // thirteen hours ahead
    after([&] { manager->setScheduleEnabled(true); });
    EXPECT_FALSE(isAwakeAt("2026-02-06 23:00")); // Saturday noon there
    EXPECT_TRUE(isAwakeAt("2026-02-08 23:00"));  // Monday noon there
}

TEST_F(KeepAwakeSchedule, followsAClockThatIsSetWithinAMinute) {
    after([&] { manager->setScheduleEnabled(true); });
    setClock("2026-02-03 20:00");
    pass(59s);
    EXPECT_TRUE(manager->isAwake());
    pass(1s);
    EXPECT_FALSE(manager->isAwake());
    setClock("2026-02-03 10:00");
    pass(60s);
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwakeSchedule, anEndThatWasSleptThroughIsSeenByTheNextCheck) {
    after([&] { manager->setScheduleEnabled(true); });
    suspend(8h);
    pass(60s);
    EXPECT_FALSE(manager->isAwake());
}

} // namespace
} // namespace tavrine
