#include "adapters/pasteboard/ReclaimBrake.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr ReclaimBrake::TimePoint start{1000s};

TEST(ReclaimBrake, tenChangesWithinASecondLeaveItReleasedAndTheEleventhEngagesIt) {
    ReclaimBrake brake;
    for (int i = 0; i < 10; ++i)
        brake.ownershipChanged(start + i * 100ms);
    EXPECT_TRUE(brake.isReleased(start + 950ms));
    EXPECT_FALSE(brake.releaseTime());
    brake.ownershipChanged(start + 1000ms); // a second after the first: still within it
    EXPECT_FALSE(brake.isReleased(start + 1000ms));
    EXPECT_EQ(brake.releaseTime(), start + 2000ms);
}

TEST(ReclaimBrake, elevenChangesInMoreThanASecondDoNotEngageIt) {
    ReclaimBrake brake;
    for (int i = 0; i < 10; ++i)
        brake.ownershipChanged(start + i * 100ms);
    brake.ownershipChanged(start + 1001ms);
    EXPECT_TRUE(brake.isReleased(start + 1001ms));
}

TEST(ReclaimBrake, aSecondOfCalmReleasesItAndNotLess) {
    ReclaimBrake brake;
    for (int i = 0; i < 11; ++i)
        brake.ownershipChanged(start);
    EXPECT_FALSE(brake.isReleased(start + 999ms));
    EXPECT_TRUE(brake.isReleased(start + 1000ms));
}

TEST(ReclaimBrake, aChangeWhileItIsEngagedBeginsTheSecondAnew) {
    ReclaimBrake brake;
    for (int i = 0; i < 11; ++i)
        brake.ownershipChanged(start);
    brake.ownershipChanged(start + 900ms);
    EXPECT_FALSE(brake.isReleased(start + 1899ms));
    EXPECT_EQ(brake.releaseTime(), start + 1900ms);
    EXPECT_TRUE(brake.isReleased(start + 1900ms));
}

TEST(ReclaimBrake, afterTheCalmItCountsFromNothing) {
    ReclaimBrake brake;
    for (int i = 0; i < 11; ++i)
        brake.ownershipChanged(start);
    for (int i = 0; i < 10; ++i)
        brake.ownershipChanged(start + 1s);
    EXPECT_TRUE(brake.isReleased(start + 1s));
}

} // namespace
} // namespace tavrine
