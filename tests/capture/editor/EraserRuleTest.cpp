#include "capture/editor/EraserRule.h"

#include "CanvasFixture.h"

#include <limits>

namespace tavrine {
namespace {

TEST(EraserRule, aPointCloserThanThreeHundredthsIsHitAndOneThatFarIsNot) {
    const DrawingPath path = drawing(DrawingKind::path, {{0.0, 0.0}});
    EXPECT_TRUE(isHitByEraser(path, {0.0299999, 0}));
    EXPECT_FALSE(isHitByEraser(path, {0.0300001, 0}));
    EXPECT_TRUE(isHitByEraser(path, {0, -0.0299999}));
    EXPECT_FALSE(isHitByEraser(path, {0.0213, 0.0213})); // 0.0301 away
    EXPECT_TRUE(isHitByEraser(path, {0.0211, 0.0211}));  // 0.0298 away
}

TEST(EraserRule, anyOfThePointsIsEnough) {
    const DrawingPath path = drawing(DrawingKind::path, {{0.1, 0.1}, {0.5, 0.5}, {0.9, 0.9}});
    EXPECT_TRUE(isHitByEraser(path, {0.51, 0.5}));
    EXPECT_FALSE(isHitByEraser(path, {0.3, 0.3})); // on the line between two of them
}

TEST(EraserRule, theMiddleOfALongRectanglesEdgeIsNoHitAndItsCornersAre) {
    const DrawingPath path = drawing(DrawingKind::rectangle, {{0.1, 0.1}, {0.9, 0.9}});
    EXPECT_FALSE(isHitByEraser(path, {0.5, 0.1}));
    EXPECT_TRUE(isHitByEraser(path, {0.1, 0.12}));
    EXPECT_TRUE(isHitByEraser(path, {0.9, 0.9}));
    EXPECT_FALSE(isHitByEraser(path, {0.9, 0.1})); // a corner that is not stored
}

TEST(EraserRule, allThatAreHitGoAtOnceAndTheOthersKeepTheirOrder) {
    const std::vector<DrawingPath> all{stamp(1, {0.5, 0.5}), stamp(2, {0.1, 0.1}), stamp(3, {0.51, 0.5}),
                                       stamp(4, {0.9, 0.9}), stamp(5, {0.5, 0.51})};
    EXPECT_EQ(erased(all, {0.5, 0.5}), (std::vector<DrawingPath>{all[1], all[3]}));
    EXPECT_EQ(erased(all, {0.3, 0.3}), all);
}

TEST(EraserRule, anAnnotationWithoutPointsOrWithOnesThatAreNoNumbersIsNeverHit) {
    constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(isHitByEraser(drawing(DrawingKind::path, {}), {0, 0}));
    EXPECT_FALSE(isHitByEraser(drawing(DrawingKind::path, {{noNumber, noNumber}}), {0, 0}));
    EXPECT_FALSE(isHitByEraser(drawing(DrawingKind::path, {{0, 0}}), {noNumber, 0}));
}

} // namespace
} // namespace tavrine
