// What the power source does to it.
#include "AwakeFixture.h"

namespace tavrine {
namespace {

using KeepAwakePower = AwakeFixture;

TEST_F(KeepAwakePower, aMachineWithoutABatteryIsPluggedInOnEveryReading) {
    after([&] { manager->setChargingOnly(true); });
    switchOn();
    for (int tick = 0; tick < 3; ++tick) {
        EXPECT_EQ(outputOf([&] { time.advance(10s); }),
                  "[KeepAwake] No battery power source found — assuming plugged in\n");
        EXPECT_TRUE(manager->isPluggedIn());
        EXPECT_TRUE(manager->isAwake());
    }
}

TEST_F(KeepAwakePower, theFirstSourceThatSaysItsStateCounts) {
    const auto key = QLatin1String("Power Source State");
    const QVariantMap silent{{QStringLiteral("Name"), QStringLiteral("InternalBattery-0")}};
    const QVariantMap unreadable{{key, 7}};
    const QVariantMap battery{{key, QStringLiteral("Battery Power")}};
    const QVariantMap mains{{key, QStringLiteral("AC Power")}};
    const std::pair<QList<QVariantMap>, bool> cases[] = {{{silent, unreadable, battery, mains}, false},
                                                         {{silent, mains, battery}, true},
                                                         {{{{key, QStringLiteral("ac power")}}}, false},
                                                         {{silent, unreadable}, true},
                                                         {{}, true}};
    for (const auto &[sources, isPluggedIn] : cases) {
        powerSource.setSources(sources);
        pass(10s);
        EXPECT_EQ(manager->isPluggedIn(), isPluggedIn);
    }
}

TEST_F(KeepAwakePower, theLaunchReadsItOnceAndKnowsTheAnswer) {
    for (const bool isPluggedIn : {false, true}) {
        setPluggedIn(isPluggedIn);
        const int readings = powerSource.readings();
        make();
        EXPECT_EQ(powerSource.readings(), readings + 1);
        EXPECT_EQ(manager->isPluggedIn(), isPluggedIn); // before the first tick
    }
}

TEST_F(KeepAwakePower, theLaunchReadsItWhenTheDesktopHasToldIt) {
    setPluggedIn(false);
    powerSource.beSilent();
    const int readings = powerSource.readings();
    make();
    EXPECT_EQ(outputOf([&] { time.advance(9s); }), "");
    EXPECT_EQ(powerSource.readings(), readings);
    EXPECT_TRUE(manager->isPluggedIn());
    EXPECT_EQ(outputOf([&] {
                  powerSource.answer();
                  time.runPending();
              }),
              "[KeepAwake] IOPSPowerSourceState=Battery Power pluggedIn=false\n");
    EXPECT_FALSE(manager->isPluggedIn());
}

TEST_F(KeepAwakePower, whatWasSwitchedOnWithChargingOnlyBeforeTheBatteryWasKnownGoesOffAndStaysOff) {
    setPluggedIn(false);
    powerSource.beSilent();
    make();
    after([&] { manager->setChargingOnly(true); });
    after([&] { manager->enable(); });
    after([&] { powerSource.answer(); });
    EXPECT_FALSE(manager->isAwake());
    EXPECT_FALSE(manager->autoDisabledForBattery());
    setPluggedIn(true);
    pass(1min);
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwakePower, whatWasSwitchedOnBeforeTheBatteryWasKnownStaysOnAndTheLidIsWarnedOf) {
    setPluggedIn(false);
    powerSource.beSilent();
    make();
    after([&] { manager->setMode(KeepAwakeMode::lidClosed); });
    switchOn();
    EXPECT_FALSE(manager->showLidClosedNoPowerWarning());
    after([&] { powerSource.answer(); });
    EXPECT_TRUE(manager->showLidClosedNoPowerWarning());
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwakePower, whatIsOffWhenTheBatteryBecomesKnownStaysOffWithoutAWarning) {
    setPluggedIn(false);
    powerSource.beSilent();
    make();
    after([&] {
        manager->setMode(KeepAwakeMode::lidClosed);
        manager->setChargingOnly(true);
    });
    after([&] { powerSource.answer(); });
    EXPECT_FALSE(manager->isAwake());
    EXPECT_FALSE(manager->showLidClosedNoPowerWarning());
    EXPECT_EQ(assertions.createdCount(), 0);
}

TEST_F(KeepAwakePower, anAnswerThatComesAfterTheManagerIsNobodys) {
    powerSource.beSilent();
    make();
    manager.reset();
    powerSource.answer();
    EXPECT_EQ(powerSource.readings(), 1) << "that of the manager before";
}

TEST_F(KeepAwakePower, theTickComesEveryTenSeconds) {
    const int readings = powerSource.readings();
    pass(9999ms);
    EXPECT_EQ(powerSource.readings(), readings);
    pass(1ms);
    EXPECT_EQ(powerSource.readings(), readings + 1);
    pass(100s);
    EXPECT_EQ(powerSource.readings(), readings + 11);
}

TEST_F(KeepAwakePower, switchingOnWithChargingOnlyOnBatteryDoesNothingAndWarnsOnlyOfTheLid) {
    setPluggedIn(false);
    after([&] { manager->setChargingOnly(true); });
    for (const KeepAwakeMode mode : {KeepAwakeMode::displayAwake, KeepAwakeMode::systemAwake}) {
        after([&] { manager->setMode(mode); });
        after([&] { manager->enable(); });
        EXPECT_FALSE(manager->isAwake());
        EXPECT_EQ(assertions.createdCount(), 0);
        EXPECT_FALSE(manager->showLidClosedNoPowerWarning());
        EXPECT_FALSE(manager->autoDisabledForBattery()) << "it does not come on by itself later";
    }
    after([&] { manager->setMode(KeepAwakeMode::lidClosed); });
    EXPECT_FALSE(manager->showLidClosedNoPowerWarning());
    after([&] { manager->enable(); });
    EXPECT_TRUE(manager->showLidClosedNoPowerWarning());
    EXPECT_FALSE(manager->isAwake());
    setPluggedIn(true);
    pass(1min);
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwakePower, withoutChargingOnlyTheLidIsHeldOnBatteryAndThePersonIsWarned) {
    setPluggedIn(false);
    after([&] { manager->setMode(KeepAwakeMode::lidClosed); });
    switchOn();
    EXPECT_TRUE(assertions.staysUpWithLidClosed());
    EXPECT_TRUE(manager->showLidClosedNoPowerWarning());
}

TEST_F(KeepAwakePower, choosingTheLidWhileAwakeOnBatteryWarns) {
    setPluggedIn(false);
    switchOn();
    EXPECT_FALSE(manager->showLidClosedNoPowerWarning());
    after([&] { manager->setMode(KeepAwakeMode::lidClosed); });
    EXPECT_TRUE(manager->showLidClosedNoPowerWarning());
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwakePower, pausesOnBatteryAndComesBackWithPower) {
    setPluggedIn(true);
    after([&] { manager->setChargingOnly(true); });
    switchOn();
    setPluggedIn(false);
    pass(9999ms);
    EXPECT_TRUE(manager->isAwake());
    pass(1ms);
    EXPECT_FALSE(manager->isAwake());
    EXPECT_TRUE(manager->autoDisabledForBattery());
    EXPECT_TRUE(assertions.held().empty());
    pass(5min);
    EXPECT_FALSE(manager->isAwake());
    setPluggedIn(true);
    pass(10s);
    EXPECT_TRUE(manager->isAwake());
    EXPECT_FALSE(manager->autoDisabledForBattery());
}

TEST_F(KeepAwakePower, anHourThatTheBatteryInterruptedAfterHalfOfItRunsInFullFromItsReturn) {
    setPluggedIn(true);
    after([&] {
        manager->setChargingOnly(true);
        manager->setDuration(KeepAwakeDuration::oneHour);
    });
    switchOn();
    pass(30min);
    setPluggedIn(false);
    pass(10s);
    ASSERT_TRUE(manager->autoDisabledForBattery());
    EXPECT_EQ(manager->activeAwakeDeadline(), std::nullopt);
    pass(2h);
    setPluggedIn(true);
    pass(10s);
    ASSERT_TRUE(manager->isAwake());
    EXPECT_EQ(manager->activeAwakeDeadline(), time.now() + Seconds{3600});
    pass(1h - 1s);
    EXPECT_TRUE(manager->isAwake());
    pass(1s);
    EXPECT_FALSE(manager->isAwake());
    pass(1min);
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwakePower, withoutChargingOnlyTheBatteryChangesNothing) {
    setPluggedIn(true);
    switchOn();
    setPluggedIn(false);
    pass(1min);
    EXPECT_TRUE(manager->isAwake());
    EXPECT_FALSE(manager->isPluggedIn());
}

TEST_F(KeepAwakePower, askingForChargingOnlyOnBatteryPausesAtOnce) {
    setPluggedIn(false);
    switchOn();
    after([&] { manager->setChargingOnly(true); });
    EXPECT_FALSE(manager->isAwake());
    EXPECT_TRUE(manager->autoDisabledForBattery());
    after([&] { manager->setChargingOnly(false); });
    EXPECT_TRUE(manager->isAwake());
    EXPECT_FALSE(manager->autoDisabledForBattery());
}

TEST_F(KeepAwakePower, whatEndsAPauseBeginsAFullDuration) {
    setPluggedIn(false);
    after([&] { manager->setDuration(KeepAwakeDuration::oneHour); });
    switchOn();
    pass(30min);
    after([&] { manager->setChargingOnly(true); });
    ASSERT_TRUE(manager->autoDisabledForBattery());
    after([&] { manager->setChargingOnly(false); });
    EXPECT_EQ(manager->activeAwakeDeadline(), time.now() + Seconds{3600});
}

TEST_F(KeepAwakePower, askingForChargingOnlyOnMainsChangesNothing) {
    setPluggedIn(true);
    switchOn();
    after([&] { manager->setChargingOnly(true); });
    EXPECT_TRUE(manager->isAwake());
    after([&] { manager->setChargingOnly(false); });
    EXPECT_EQ(assertions.createdCount(), 1);
}

TEST_F(KeepAwakePower, thePersonsSwitchEndsAPauseOnMainsAndKeepsItOnBattery) {
    setPluggedIn(false);
    switchOn();
    after([&] { manager->setChargingOnly(true); });
    after([&] { manager->toggle(); });
    EXPECT_FALSE(manager->isAwake());
    EXPECT_TRUE(manager->autoDisabledForBattery());
    setPluggedIn(true);
    after([&] { manager->toggle(); });
    EXPECT_TRUE(manager->isAwake());
    EXPECT_FALSE(manager->autoDisabledForBattery());
}

TEST_F(KeepAwakePower, aStopByThePersonDoesNotComeBackWithPower) {
    setPluggedIn(true);
    after([&] { manager->setChargingOnly(true); });
    switchOn();
    after([&] { manager->toggle(); });
    setPluggedIn(false);
    pass(10s);
    setPluggedIn(true);
    pass(1min);
    EXPECT_FALSE(manager->isAwake());
}

TEST_F(KeepAwakePower, theToolsSwitchEndsAPause) {
    setPluggedIn(false);
    switchOn();
    after([&] { manager->setChargingOnly(true); });
    after([&] { manager->setFeatureOn(false); });
    EXPECT_FALSE(manager->autoDisabledForBattery());
    setPluggedIn(true);
    pass(1min);
    EXPECT_FALSE(manager->isAwake());
}

// The warning while the lid is closed.

TEST_F(KeepAwakePower, powerThatIsPulledInLidClosedModePostsOneNotification) {
    setPluggedIn(true);
    after([&] { manager->setMode(KeepAwakeMode::lidClosed); });
    switchOn();
    pass(10s);
    EXPECT_EQ(notifications.added(), 0);
    setPluggedIn(false);
    pass(10s);
    ASSERT_EQ(notifications.shown().size(), 1);
    EXPECT_EQ(notifications.shown().first().identifier, QStringLiteral("keepAwake.lidWarning"));
    EXPECT_EQ(notifications.shown().first().title, QStringLiteral("Keep Awake Warning"));
    EXPECT_EQ(notifications.shown().first().body,
              QStringLiteral("Lid Closed mode is active but your computer is now on battery. Connect power to "
                             "maintain full performance."));
    pass(10min);
    EXPECT_EQ(notifications.added(), 1);
    EXPECT_TRUE(manager->isAwake());
    setPluggedIn(true);
    pass(10s);
    setPluggedIn(false);
    pass(10s);
    EXPECT_EQ(notifications.added(), 2);
}

TEST_F(KeepAwakePower, otherModesAndASwitchThatIsOffPostNone) {
    setPluggedIn(true);
    switchOn();
    for (const KeepAwakeMode mode : {KeepAwakeMode::displayAwake, KeepAwakeMode::systemAwake}) {
        after([&] { manager->setMode(mode); });
        setPluggedIn(false);
        pass(10s);
        setPluggedIn(true);
        pass(10s);
    }
    after([&] { manager->disable(); });
    after([&] { manager->setMode(KeepAwakeMode::lidClosed); });
    setPluggedIn(false);
    pass(10s);
    EXPECT_EQ(notifications.added(), 0);
}

TEST_F(KeepAwakePower, withoutPermissionNothingIsPosted) {
    notifications.setGranted(false);
    setPluggedIn(true);
    after([&] { manager->setMode(KeepAwakeMode::lidClosed); });
    switchOn();
    setPluggedIn(false);
    pass(10s);
    EXPECT_EQ(notifications.added(), 0);
    EXPECT_TRUE(manager->isAwake());
}

TEST_F(KeepAwakePower, withChargingOnlyTheLidIsWarnedOfAndPaused) {
    setPluggedIn(true);
    after([&] {
        manager->setMode(KeepAwakeMode::lidClosed);
        manager->setChargingOnly(true);
    });
    switchOn();
    setPluggedIn(false);
    pass(10s);
    EXPECT_EQ(notifications.added(), 1);
    EXPECT_FALSE(manager->isAwake());
    EXPECT_TRUE(manager->autoDisabledForBattery());
}

} // namespace
} // namespace tavrine
