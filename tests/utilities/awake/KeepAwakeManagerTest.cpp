// The switch, the modes, the timed session and the preferences.
#include "AwakeFixture.h"
#include "utilities/awake/KeepAwakePreferences.h"

namespace tavrine {
namespace {

class KeepAwake : public AwakeFixture {
protected:
    void expectDefaults() {
        EXPECT_FALSE(manager->isAwake());
        EXPECT_TRUE(manager->isPluggedIn());
        EXPECT_EQ(manager->selectedMode(), KeepAwakeMode::displayAwake);
        EXPECT_EQ(manager->selectedDuration(), KeepAwakeDuration::indefinite);
        EXPECT_FALSE(manager->chargingOnly());
        EXPECT_FALSE(manager->scheduleEnabled());
        EXPECT_EQ(manager->scheduleStart(), (TimeOfDay{9, 0}));
        EXPECT_EQ(manager->scheduleEnd(), (TimeOfDay{18, 0}));
        EXPECT_TRUE(manager->weekdaysOnly());
        EXPECT_FALSE(manager->showAdvancedPanel());
        EXPECT_FALSE(manager->showLidClosedNoPowerWarning());
        EXPECT_FALSE(manager->autoDisabledForBattery());
        EXPECT_EQ(manager->activeAwakeDeadline(), std::nullopt);
        EXPECT_TRUE(assertions.held().empty());
    }
};

TEST_F(KeepAwake, theModesAreStoredShownAndHeldByTheirTable) {
    std::vector<std::string> rows;
    for (const KeepAwakeModeRow &row : keepAwakeModes) {
        EXPECT_EQ(&rowOf(row.mode), &row);
        rows.push_back(textOf(keepAwakeModeTexts, row.mode).toStdString() + ": " + row.label + ", " + row.subtitle +
                       ", " + row.statusName);
    }
    EXPECT_THAT(rows, testing::ElementsAre("displayAwake: Display, Screen stays on, Display Awake",
                                           "systemAwake: System, Screen may sleep, System Awake",
                                           "lidClosed: Lid Closed, Works with lid closed, Lid Closed"));
}

TEST_F(KeepAwake, theDurationsAreStoredShownAndCountedByTheirTable) {
    std::vector<std::string> rows;
    for (const KeepAwakeDurationRow &row : keepAwakeDurations) {
        EXPECT_EQ(&rowOf(row.duration), &row);
        rows.push_back(textOf(keepAwakeDurationTexts, row.duration).toStdString() + ": " + row.label + ", " +
                       (row.length ? std::to_string(int(row.length->count())) : "none"));
    }
    EXPECT_THAT(rows, testing::ElementsAre("fifteenMinutes: 15 min, 900", "oneHour: 1 hr, 3600",
                                           "twoHours: 2 hrs, 7200", "indefinite: Indefinite, none"));
}

TEST_F(KeepAwake, startsAsleepWithItsDefaults) {
    expectDefaults();
}

TEST_F(KeepAwake, theSwitchHoldsOneAssertionOfTheModeAndLetsItGo) {
    const std::pair<KeepAwakeMode, PowerAssertionType> modes[] = {
        {KeepAwakeMode::displayAwake, PowerAssertionType::noDisplaySleep},
        {KeepAwakeMode::systemAwake, PowerAssertionType::noIdleSleep},
        {KeepAwakeMode::lidClosed, PowerAssertionType::preventSystemSleep}};
    for (const auto &[mode, type] : modes) {
        after([&, mode = mode] { manager->setMode(mode); });
        EXPECT_TRUE(assertions.held().empty()) << "choosing a mode switches nothing on";
        after([&] { manager->toggle(); });
        EXPECT_TRUE(manager->isAwake());
        ASSERT_EQ(assertions.held().size(), 1U);
        EXPECT_EQ(assertions.held().begin()->second.type, type);
        EXPECT_EQ(assertions.held().begin()->second.name, QStringLiteral("Tavrine Keep Awake"));
        EXPECT_EQ(assertions.staysUpWithLidClosed(), mode == KeepAwakeMode::lidClosed);
        after([&] { manager->toggle(); });
        EXPECT_FALSE(manager->isAwake());
        EXPECT_TRUE(assertions.held().empty());
    }
}

TEST_F(KeepAwake, tellsWhatItDoesOnStandardOutput) {
    EXPECT_EQ(outputOf([&] {
                  manager->enable();
                  time.runPending();
              }),
              "[KeepAwake] No battery power source found — assuming plugged in\n"
              "[KeepAwake] enable() — mode: displayAwake, pluggedIn: true\n"
              "[KeepAwake] makeAssertion result=0 id=1 mode=displayAwake\n");
    setPluggedIn(true);
    EXPECT_EQ(outputOf([&] {
                  manager->setMode(KeepAwakeMode::systemAwake);
                  time.runPending();
              }),
              "[KeepAwake] IOPSPowerSourceState=AC Power pluggedIn=true\n"
              "[KeepAwake] setMode(systemAwake) while awake — pluggedIn: true\n"
              "[KeepAwake] makeAssertion result=0 id=2 mode=systemAwake\n");
    setPluggedIn(false);
    EXPECT_EQ(outputOf([&] { time.advance(10s); }), "[KeepAwake] IOPSPowerSourceState=Battery Power pluggedIn=false\n");
}

TEST_F(KeepAwake, whatPeopleSeeChangesATurnLater) {
    quietly([&] {
        manager->enable();
        EXPECT_FALSE(manager->isAwake());
        time.runPending();
        EXPECT_TRUE(manager->isAwake());
        setPluggedIn(false);
        manager->setMode(KeepAwakeMode::systemAwake);
        EXPECT_TRUE(manager->isPluggedIn());
        time.runPending();
        EXPECT_FALSE(manager->isPluggedIn());
        manager->disable();
        EXPECT_TRUE(manager->isAwake());
        time.runPending();
        EXPECT_FALSE(manager->isAwake());
    });
}

TEST_F(KeepAwake, ofTwoCallsInOneTurnTheLaterOneHolds) {
    after([&] {
        manager->enable();
        manager->disable();
    });
    EXPECT_FALSE(manager->isAwake());
    EXPECT_TRUE(assertions.held().empty());
    after([&] {
        manager->enable();
        manager->enable();
    });
    EXPECT_TRUE(manager->isAwake());
    EXPECT_EQ(assertions.held().size(), 1U);
    after([&] {
        manager->disable();
        manager->enable();
    });
    EXPECT_TRUE(manager->isAwake());
    EXPECT_EQ(assertions.held().size(), 1U);
    after([&] {
        manager->disable();
        manager->setMode(KeepAwakeMode::systemAwake);
    });
    EXPECT_FALSE(manager->isAwake()) << "a mode switches nothing on";
    EXPECT_TRUE(assertions.held().empty());
}

TEST_F(KeepAwake, theSwitchFollowsTheHandBeforeTheAnswer) {
    assertions.setHanging(true);
    after([&] { manager->toggle(); });
    EXPECT_TRUE(manager->isHolding());
    EXPECT_FALSE(manager->isAwake());
    after([&] { manager->toggle(); });
    EXPECT_FALSE(manager->isHolding());
    EXPECT_TRUE(assertions.held().empty());
}

TEST_F(KeepAwake, aModeThatIsChosenBeforeTheAnswerIsTheOneThatIsHeld) {
    after([&] {
        manager->enable();
        manager->setMode(KeepAwakeMode::systemAwake);
    });
    EXPECT_TRUE(manager->isAwake());
    ASSERT_EQ(assertions.held().size(), 1U);
    EXPECT_EQ(assertions.held().begin()->second.type, PowerAssertionType::noIdleSleep);
}

TEST_F(KeepAwake, noTimerIsLeftBySwitchingOffWithinTheTurn) {
    after([&] { manager->setDuration(KeepAwakeDuration::fifteenMinutes); });
    const int timers = time.timerCount();
    after([&] {
        manager->enable();
        manager->disable();
    });
    EXPECT_EQ(time.timerCount(), timers);
    EXPECT_EQ(manager->activeAwakeDeadline(), std::nullopt);
}

TEST_F(KeepAwake, aRefusedAssertionLeavesItOffWithoutADeadline) {
    after([&] { manager->setDuration(KeepAwakeDuration::oneHour); });
    assertions.setRefusing(true);
    EXPECT_THAT(outputOf([&] {
                    manager->enable();
                    time.runPending();
                }),
                HasSubstr("[KeepAwake] makeAssertion result=5 id=0 mode=displayAwake\n"));
    EXPECT_FALSE(manager->isAwake());
    EXPECT_EQ(manager->activeAwakeDeadline(), std::nullopt);
}

TEST_F(KeepAwake, anAssertionThatIsRefusedToANewModeEndsTheSession) {
    after([&] { manager->setDuration(KeepAwakeDuration::oneHour); });
    switchOn();
    const int timers = time.timerCount();
    assertions.setRefusing(true);
    after([&] { manager->setMode(KeepAwakeMode::systemAwake); });
    EXPECT_FALSE(manager->isAwake());
    EXPECT_EQ(manager->activeAwakeDeadline(), std::nullopt);
    EXPECT_EQ(time.timerCount(), timers - 1);
    EXPECT_TRUE(assertions.held().empty());
}

TEST_F(KeepAwake, aServiceThatHangsIsAFailureASecondLater) {
    assertions.setHanging(true);
    after([&] { manager->enable(); });
    pass(999ms);
    EXPECT_FALSE(assertions.held().empty());
    EXPECT_FALSE(manager->isAwake());
    pass(1ms);
    EXPECT_FALSE(manager->isAwake());
    EXPECT_TRUE(assertions.held().empty());
}

// The timed session.

TEST_F(KeepAwake, aTimedSessionEndsAtItsDeadlineAndNotBefore) {
    const std::pair<KeepAwakeDuration, Seconds> durations[] = {{KeepAwakeDuration::fifteenMinutes, 900s},
                                                               {KeepAwakeDuration::oneHour, 3600s},
                                                               {KeepAwakeDuration::twoHours, 7200s}};
    for (const auto &[duration, length] : durations) {
        after([&, duration = duration] { manager->setDuration(duration); });
        const Date start = time.now();
        switchOn();
        EXPECT_EQ(manager->activeAwakeDeadline(), start + length);
        pass(length - Seconds{1});
        EXPECT_TRUE(manager->isAwake());
        pass(1s);
        EXPECT_FALSE(manager->isAwake());
        EXPECT_TRUE(assertions.held().empty());
        EXPECT_EQ(manager->activeAwakeDeadline(), std::nullopt);
        EXPECT_FALSE(manager->autoDisabledForBattery());
    }
}

TEST_F(KeepAwake, anOpenEndedSessionGoesOn) {
    switchOn();
    EXPECT_EQ(manager->activeAwakeDeadline(), std::nullopt);
    pass(30 * 24h);
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwake, aChangeOfModeAtMinuteTenOfFifteenStillEndsAtMinuteFifteen) {
    after([&] { manager->setDuration(KeepAwakeDuration::fifteenMinutes); });
    switchOn();
    pass(10min);
    after([&] { manager->setMode(KeepAwakeMode::systemAwake); });
    pass(5min - 1s);
    EXPECT_TRUE(manager->isAwake());
    pass(1s);
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwake, anotherDurationCountsFromTheMomentOfItsChoice) {
    after([&] { manager->setDuration(KeepAwakeDuration::fifteenMinutes); });
    switchOn();
    pass(10min);
    after([&] { manager->setDuration(KeepAwakeDuration::oneHour); });
    EXPECT_EQ(manager->activeAwakeDeadline(), time.now() + Seconds{3600});
    pass(1h - 1s);
    EXPECT_TRUE(manager->isAwake());
    after([&] { manager->setDuration(KeepAwakeDuration::indefinite); });
    EXPECT_EQ(manager->activeAwakeDeadline(), std::nullopt);
    pass(24h);
    EXPECT_TRUE(manager->isAwake());
    EXPECT_EQ(assertions.createdCount(), 1) << "the assertion itself stays";
}

TEST_F(KeepAwake, aDurationThatIsChosenAtTheVeryEndHolds) {
    after([&] { manager->setDuration(KeepAwakeDuration::fifteenMinutes); });
    switchOn();
    quietly([&] {
        time.asyncAfter(900s, [&] { manager->setDuration(KeepAwakeDuration::oneHour); });
        time.advance(900s);
    });
    EXPECT_TRUE(manager->isAwake());
    EXPECT_EQ(manager->activeAwakeDeadline(), time.now() + Seconds{3600});
}

TEST_F(KeepAwake, switchingOnAgainBeginsAFullDuration) {
    after([&] { manager->setDuration(KeepAwakeDuration::fifteenMinutes); });
    switchOn();
    pass(10min);
    after([&] { manager->enable(); });
    pass(15min - 1s);
    EXPECT_TRUE(manager->isAwake());
    pass(1s);
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwake, aClockThatJumpsMovesNoDeadline) {
    for (const Seconds jump : {Seconds{-86'400}, Seconds{86'400}}) {
        after([&] { manager->setDuration(KeepAwakeDuration::oneHour); });
        switchOn();
        pass(30min);
        time.setWallClock(time.now() + jump);
        EXPECT_EQ(manager->activeAwakeDeadline(), time.now() + Seconds{1800});
        after([&] { manager->setMode(KeepAwakeMode::systemAwake); });
        pass(30min - 1s);
        EXPECT_TRUE(manager->isAwake());
        pass(1s);
        EXPECT_FALSE(manager->isAwake());
    }
}

TEST_F(KeepAwake, timeInWhichTheMachineIsSuspendedCounts) {
    after([&] { manager->setDuration(KeepAwakeDuration::twoHours); });
    switchOn();
    pass(30min);
    suspend(1h);
    EXPECT_EQ(manager->activeAwakeDeadline(), time.now() + Seconds{1800});
    pass(30min - 1s);
    EXPECT_TRUE(manager->isAwake());
    pass(10s);
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwake, aSessionThatEndedWhileTheMachineWasSuspendedEndsWithTheNextPowerTick) {
    after([&] { manager->setDuration(KeepAwakeDuration::oneHour); });
    switchOn();
    pass(30min + 1s);
    suspend(1h);
    pass(8s);
    EXPECT_TRUE(manager->isAwake());
    pass(1s);
    EXPECT_FALSE(manager->isAwake());
    EXPECT_FALSE(manager->autoDisabledForBattery());
}

TEST_F(KeepAwake, aModeThatIsChosenAfterTheEndWasSleptThroughEndsTheSession) {
    after([&] { manager->setDuration(KeepAwakeDuration::fifteenMinutes); });
    switchOn();
    pass(1s);
    suspend(1h);
    after([&] { manager->setMode(KeepAwakeMode::systemAwake); });
    EXPECT_FALSE(manager->isAwake());
    EXPECT_TRUE(assertions.held().empty());
}

// The tool's own switch.

TEST_F(KeepAwake, theToolsSwitchEndsWhatIsHeld) {
    switchOn();
    after([&] { manager->setFeatureOn(false); });
    EXPECT_FALSE(manager->isAwake());
    after([&] { manager->setFeatureOn(true); });
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwake, whileTheToolIsOffTheScheduleRests) {
    after([&] { manager->setScheduleEnabled(true); });
    ASSERT_TRUE(manager->isAwake());
    after([&] { manager->setFeatureOn(false); });
    pass(1h);
    EXPECT_FALSE(manager->isAwake());
    after([&] { manager->setFeatureOn(true); });
    pass(60s);
    EXPECT_TRUE(manager->isAwake());
}

// The preferences.

TEST_F(KeepAwake, everyChoiceSavesAllSevenAndIsThereAtTheNextLaunch) {
    using Change = std::function<void()>;
    const Change changes[] = {[&] { manager->setMode(KeepAwakeMode::lidClosed); },
                              [&] { manager->setDuration(KeepAwakeDuration::twoHours); },
                              [&] { manager->setChargingOnly(true); },
                              [&] { manager->setScheduleEnabled(true); },
                              [&] {
                                  manager->setScheduleStart({22, 15});
                              },
                              [&] {
                                  manager->setScheduleEnd({6, 30});
                              },
                              [&] { manager->setWeekdaysOnly(false); }};
    const char *keys[] = {"keepAwakeModeV2",         "keepAwakeDuration",        "keepAwakeChargingOnly",
                          "keepAwakeWeekdaysOnly",   "keepAwakeScheduleEnabled", "keepAwakeScheduleStartSecs",
                          "keepAwakeScheduleEndSecs"};
    for (const Change &change : changes) {
        for (const char *key : keys)
            defaults.remove(QLatin1String(key));
        after(change);
        for (const char *key : keys)
            EXPECT_TRUE(defaults.contains(QLatin1String(key))) << key;
    }
    EXPECT_EQ(defaults.get<qint64>(QStringLiteral("keepAwakeScheduleStartSecs")), 22 * 3600 + 15 * 60);
    make();
    EXPECT_FALSE(manager->isAwake());
    EXPECT_EQ(manager->selectedMode(), KeepAwakeMode::lidClosed);
    EXPECT_EQ(manager->selectedDuration(), KeepAwakeDuration::twoHours);
    EXPECT_TRUE(manager->chargingOnly());
    EXPECT_TRUE(manager->scheduleEnabled());
    EXPECT_EQ(manager->scheduleStart(), (TimeOfDay{22, 15}));
    EXPECT_EQ(manager->scheduleEnd(), (TimeOfDay{6, 30}));
    EXPECT_FALSE(manager->weekdaysOnly());
}

TEST_F(KeepAwake, storedTextsThatAreNoChoiceCountAsAbsent) {
    defaults.set(QStringLiteral("keepAwakeModeV2"), QStringLiteral("DisplayAwake"));
    defaults.set(QStringLiteral("keepAwakeDuration"), QStringLiteral("forever"));
    make();
    EXPECT_EQ(manager->selectedMode(), KeepAwakeMode::displayAwake);
    EXPECT_EQ(manager->selectedDuration(), KeepAwakeDuration::indefinite);
}

TEST_F(KeepAwake, storedValuesOfAnotherTypeCountAsAbsent) {
    defaults.set(QStringLiteral("keepAwakeModeV2"), 2);
    defaults.set(QStringLiteral("keepAwakeDuration"), 2);
    defaults.set(QStringLiteral("keepAwakeChargingOnly"), 1);
    defaults.set(QStringLiteral("keepAwakeScheduleEnabled"), QStringLiteral("true"));
    defaults.set(QStringLiteral("keepAwakeWeekdaysOnly"), 0);
    defaults.set(QStringLiteral("keepAwakeScheduleStartSecs"), QStringLiteral("3600"));
    defaults.set(QStringLiteral("keepAwakeScheduleEndSecs"), 3600.0);
    make();
    expectDefaults();
}

TEST_F(KeepAwake, storedTimesAreTakenFromTheWholeDayAndFromNothingElse) {
    const std::pair<qint64, TimeOfDay> cases[] = {{-1, {9, 0}},
                                                  {0, {0, 0}},
                                                  {59, {0, 0}},
                                                  {60, {0, 1}},
                                                  {86'399, {23, 59}},
                                                  {86'400, {9, 0}},
                                                  {1'000'000'000, {9, 0}},
                                                  {std::numeric_limits<qint64>::min(), {9, 0}},
                                                  {std::numeric_limits<qint64>::max(), {9, 0}}};
    for (const auto &[seconds, expected] : cases) {
        defaults.set(QStringLiteral("keepAwakeScheduleStartSecs"), seconds);
        make();
        EXPECT_EQ(manager->scheduleStart(), expected) << seconds;
    }
}

// What the menu will show.

TEST_F(KeepAwake, tellsOfItsStateItsPanelAndItsWarningOnceForEachChange) {
    int states = 0;
    std::vector<bool> panels;
    std::vector<bool> warnings;
    QObject::connect(manager.get(), &KeepAwakeManager::awakeStateChanged, manager.get(), [&] { ++states; });
    QObject::connect(manager.get(), &KeepAwakeManager::showAdvancedPanelChanged, manager.get(),
                     [&](bool isShown) { panels.push_back(isShown); });
    QObject::connect(manager.get(), &KeepAwakeManager::showLidClosedNoPowerWarningChanged, manager.get(),
                     [&](bool isWanted) { warnings.push_back(isWanted); });
    switchOn();
    EXPECT_EQ(states, 1);
    after([&] { manager->setMode(KeepAwakeMode::systemAwake); });
    EXPECT_EQ(states, 2);
    after([&] { manager->setMode(KeepAwakeMode::systemAwake); });
    EXPECT_EQ(states, 2);
    manager->setShowAdvancedPanel(true);
    manager->setShowAdvancedPanel(true);
    manager->setShowAdvancedPanel(false);
    EXPECT_THAT(panels, testing::ElementsAre(true, false));
    setPluggedIn(false);
    after([&] { manager->setMode(KeepAwakeMode::lidClosed); });
    after([&] { manager->enable(); });
    EXPECT_THAT(warnings, testing::ElementsAre(true));
    manager->setShowLidClosedNoPowerWarning(false);
    EXPECT_THAT(warnings, testing::ElementsAre(true, false));
}

} // namespace
} // namespace tavrine
