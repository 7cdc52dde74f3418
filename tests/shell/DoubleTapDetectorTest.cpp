#include "shell/DoubleTapDetector.h"

#include "ports/EventMonitors.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

constexpr Date start{1769860800.0};

class DoubleTapDetectorTest : public ::testing::Test {
protected:
    bool press(double seconds, quint32 flags = modifierFlag::option) {
        return detector.flagsChanged(flags, start + Seconds{seconds});
    }
    bool release(double seconds) { return detector.flagsChanged(0, start + Seconds{seconds}); }
    bool tap(double seconds) {
        const bool fired = press(seconds);
        EXPECT_FALSE(release(seconds + 0.01));
        return fired;
    }

    DoubleTapDetector detector;
};

TEST_F(DoubleTapDetectorTest, aSingleTapDoesNotFire) {
    EXPECT_FALSE(tap(0));
}

TEST_F(DoubleTapDetectorTest, twoPressesCloserThanTheIntervalFire) {
    tap(0);
    EXPECT_TRUE(tap(0.44));
}

TEST_F(DoubleTapDetectorTest, anIntervalOfExactlyTheLimitFires) {
    tap(0);
    EXPECT_TRUE(tap(0.45));
}

TEST_F(DoubleTapDetectorTest, anIntervalJustAboveTheLimitDoesNotFire) {
    tap(0);
    EXPECT_FALSE(tap(0.4501));
}

TEST_F(DoubleTapDetectorTest, aSecondPressThatCameTooLateIsTheNewFirst) {
    tap(0);
    EXPECT_FALSE(tap(0.46));
    EXPECT_TRUE(tap(0.90));
}

TEST_F(DoubleTapDetectorTest, theTimeRunsFromPressToPressAndNotFromTheRelease) {
    press(0);
    release(0.40);
    EXPECT_FALSE(press(0.46));
}

TEST_F(DoubleTapDetectorTest, aThirdTapStartsANewPair) {
    tap(0);
    EXPECT_TRUE(tap(0.1));
    EXPECT_FALSE(tap(0.2));
    EXPECT_TRUE(tap(0.3));
}

TEST_F(DoubleTapDetectorTest, aFourthTapTooLongAfterTheThirdDoesNotFire) {
    tap(0);
    EXPECT_TRUE(tap(0.1));
    EXPECT_FALSE(tap(0.2));
    EXPECT_FALSE(tap(0.66));
}

TEST_F(DoubleTapDetectorTest, aKeyThatStaysDownIsOnePress) {
    press(0);
    EXPECT_FALSE(press(0.1));
    EXPECT_FALSE(press(0.2));
}

TEST_F(DoubleTapDetectorTest, eachOtherModifierHeldKeepsAPressFromCounting) {
    for (const quint32 other : {modifierFlag::shift, modifierFlag::control, modifierFlag::command,
                                modifierFlag::capsLock, modifierFlag::function}) {
        detector.reset();
        tap(0);
        EXPECT_FALSE(press(0.1, modifierFlag::option | other)) << other;
    }
}

TEST_F(DoubleTapDetectorTest, optionWithShiftClearsTheKeyDownMark) {
    press(0);
    press(0.1, modifierFlag::option | modifierFlag::shift); // Option is still down
    EXPECT_TRUE(press(0.2));                                // Shift let go: Option alone is a press again
}

TEST_F(DoubleTapDetectorTest, theLowSixteenBitsOfTheFlagsDoNotCount) {
    press(0, modifierFlag::option | 0x20);
    release(0.01);
    EXPECT_TRUE(press(0.1, modifierFlag::option | 0xFFFF));
}

TEST_F(DoubleTapDetectorTest, aResetForgetsTheLastTap) {
    tap(0);
    detector.reset();
    EXPECT_FALSE(tap(0.1));
}

TEST_F(DoubleTapDetectorTest, aResetForgetsThatTheKeyIsDown) {
    press(0);
    detector.reset();
    EXPECT_FALSE(press(0.1));
    release(0.15);
    EXPECT_TRUE(press(0.2));
}

} // namespace
} // namespace tavrine
