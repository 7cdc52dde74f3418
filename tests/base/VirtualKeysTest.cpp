#include "base/VirtualKeys.h"

#include <limits>
#include <set>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

TEST(VirtualKeys, aKeyAndItsPositionAreReadInBothDirections) {
    const std::pair<int, int> rows[] = {{0, 30}, {9, 47}, {19, 3}, {22, 7}, {36, 28}, {53, 1}, {76, 96}, {126, 103}};
    for (const auto &[key, evdev] : rows) {
        EXPECT_EQ(evdevPosition(key), evdev);
        EXPECT_EQ(virtualKeyAt(evdev), key);
        EXPECT_EQ(xKeycode(key), evdev + 8);
        EXPECT_EQ(virtualKeyOfXKeycode(evdev + 8), key);
    }
}

TEST(VirtualKeys, noKeyAndNoPositionStandsTwice) {
    std::set<int> keys;
    std::set<int> positions;
    for (const auto &position : keyPositions) {
        EXPECT_TRUE(keys.insert(position.virtualKey).second) << position.virtualKey;
        EXPECT_TRUE(positions.insert(position.evdev).second) << position.evdev;
    }
}

TEST(VirtualKeys, whatHasNoPositionIsNone) {
    for (const int key : {-1, 52, 63, 127, 1000})
        EXPECT_EQ(xKeycode(key), std::nullopt) << key;
    EXPECT_EQ(virtualKeyAt(0), std::nullopt);
}

/// Told by the compiler, which takes no number that is too large for its type.
TEST(VirtualKeys, anyNumberMayBeLookedUp) {
    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    static_assert(!virtualKeyOfXKeycode(lowest) && !virtualKeyOfXKeycode(highest));
    static_assert(!xKeycode(lowest) && !xKeycode(highest));
    EXPECT_EQ(virtualKeyOfXKeycode(xKeycodeOffset - 1), std::nullopt);
}

} // namespace
} // namespace tavrine
