#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/VirtualTime.h"
#include "look/Look.h"
#include "panels/PanelAnimator.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

class PanelMotion : public testing::Test {
protected:
    void fadeIn() {
        panel->setAlpha(0);
        animator.run(*panel, 200ms, look::linearTiming, {.alpha = 1.0, .frame = {}}, [this] { ++ends; });
    }

    VirtualTime time;
    FakeAppearance appearance;
    look::Look look{time, &appearance};
    FakePanelWindows windows;
    std::unique_ptr<PanelWindow> panel = windows.makePanel({.title = {}, .contentSize = {100, 50}});
    PanelAnimator animator{windows, time};
    int ends = 0;
};

TEST_F(PanelMotion, aPanelIsThereAtOnceWhereTheDesktopAsksForLessMotion) {
    appearance.set({.reducesMotion = true});
    fadeIn();
    EXPECT_EQ(panel->alpha(), 1.0);
    EXPECT_EQ(time.timerCount(), 0);
    EXPECT_EQ(ends, 0);
    time.runPending();
    EXPECT_EQ(ends, 1);
}

TEST_F(PanelMotion, aPanelUnderWayIsThereWithTheNextFrameAndEndsInItsTime) {
    fadeIn();
    time.advance(100ms);
    EXPECT_LT(panel->alpha(), 0.7);
    appearance.set({.reducesMotion = true});
    time.advance(20ms);
    EXPECT_EQ(panel->alpha(), 1.0);
    EXPECT_EQ(ends, 0);
    time.advance(80ms);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(time.timerCount(), 0);
}

} // namespace
} // namespace tavrine
