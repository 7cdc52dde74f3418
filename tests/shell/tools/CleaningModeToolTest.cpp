#include "../ShellTest.h"

namespace tavrine {
namespace {

class CleaningModeToolTest : public ShellTest {
protected:
    CleaningModeToolTest() { launch(); }
    KeyboardCleanerManager &cleaner() { return delegate->tools().cleaningMode().manager(); }
};

TEST_F(CleaningModeToolTest, aLaunchTakesNoKeyboard) {
    EXPECT_EQ(desktop.eventTaps().creations(), 0);
    EXPECT_FALSE(cleaner().isCleaning());
}

TEST_F(CleaningModeToolTest, itsSwitchGoingOffEndsTheModeAndTheWaitForIt) {
    cleaner().startCleaning();
    set(Feature::cleaningMode, false);
    EXPECT_FALSE(desktop.eventTaps().keyArrives());
    time.runPending();
    EXPECT_FALSE(cleaner().isCleaning());
    EXPECT_TRUE(desktop.eventTaps().keyArrives());

    desktop.eventTaps().hold();
    cleaner().startCleaning();
    set(Feature::cleaningMode, true);
    set(Feature::cleaningMode, false);
    time.runPending();
    EXPECT_FALSE(cleaner().isStarting());
}

TEST_F(CleaningModeToolTest, itsSwitchGoingOnStartsNothing) {
    set(Feature::cleaningMode, false);
    set(Feature::cleaningMode, true);
    time.runPending();
    EXPECT_FALSE(cleaner().isCleaning());
    EXPECT_EQ(desktop.eventTaps().creations(), 0);
}

TEST_F(CleaningModeToolTest, theEndOfTheProgramFreesTheKeyboard) {
    cleaner().startCleaning();
    delegate.reset();
    EXPECT_TRUE(desktop.eventTaps().keyArrives());
}

} // namespace
} // namespace tavrine
