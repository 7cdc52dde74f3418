#include "capture/ClearedScreen.h"

#include "adapters/fake/VirtualTime.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

class ClearedScreenTest : public testing::Test, protected ClearedScreen::Windows {
protected:
    ClearedScreenTest() { screen.setWindows(this); }
    bool setAside() override { return std::exchange(isShown, false); }
    void bringBack() override { isShown = true; }
    void look() {
        screen.clearFor([this] {
            EXPECT_FALSE(isShown);
            ++looks;
        });
    }

    VirtualTime time;
    ClearedScreen screen{time};
    bool isShown = true;
    int looks = 0;
};

TEST_F(ClearedScreenTest, aLookBeginsOnceWhatStoodThereIsGoneAndItsEndBringsThatBack) {
    look();
    EXPECT_FALSE(isShown);
    time.advance(199ms);
    EXPECT_EQ(looks, 0);
    time.advance(1ms);
    EXPECT_EQ(looks, 1);
    screen.lookEnded();
    EXPECT_TRUE(isShown);
}

TEST_F(ClearedScreenTest, withNothingInItsWayALookBeginsAtOnce) {
    isShown = false;
    look();
    EXPECT_EQ(looks, 1);
    ClearedScreen bare(time);
    bare.clearFor([this] { ++looks; });
    EXPECT_EQ(looks, 2);
    bare.lookEnded();
}

TEST_F(ClearedScreenTest, nothingComesBackBeforeTheLastOfSeveralLooksIsOver) {
    look();
    time.advance(100ms);
    look();
    time.advance(100ms);
    EXPECT_EQ(looks, 2);
    screen.lookEnded();
    EXPECT_FALSE(isShown);
    screen.lookEnded();
    EXPECT_TRUE(isShown);
}

TEST_F(ClearedScreenTest, anEndWhileAnotherLookWaitsLeavesTheScreenClear) {
    look();
    time.advance(1s);
    isShown = true; // something new
    look();
    screen.lookEnded();
    EXPECT_FALSE(isShown);
    time.advance(1s);
    EXPECT_EQ(looks, 2);
}

TEST_F(ClearedScreenTest, anEndWithoutALookChangesNothing) {
    screen.lookEnded();
    look();
    time.advance(1s);
    EXPECT_FALSE(isShown);
    screen.lookEnded();
    EXPECT_TRUE(isShown);
}

} // namespace
} // namespace tavrine
