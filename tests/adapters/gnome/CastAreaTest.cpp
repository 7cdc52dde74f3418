#include "adapters/gnome/cast/CastArea.h"

#include <gtest/gtest.h>

using namespace tavrine;

namespace {

ScreenStreamConfiguration configured(const QRectF &source, int width, int height) {
    ScreenStreamConfiguration configuration;
    configuration.sourceRect = source;
    configuration.width = width;
    configuration.height = height;
    return configuration;
}

void expectSame(const std::optional<CastArea> &is, const CastArea &should) {
    ASSERT_TRUE(is);
    EXPECT_EQ(is->plane, should.plane);
    EXPECT_EQ(is->pictures, should.pictures);
    EXPECT_EQ(is->area, should.area);
}

TEST(CastArea, isTheAreaItselfWhereThePlaneHasEachPixel) {
    expectSame(castAreaOf(configured({300, 197, 600, 370}, 600, 370), {1920, 0, 1280, 720}, 1, 1),
               {{2220, 197, 600, 370}, {600, 370}, {0, 0, 600, 370}});
}

TEST(CastArea, beginsAndEndsWhereAPixelDoes) {
    // 301 * 1.5 is 451.5: the cast begins at 300, which is 450.
    expectSame(castAreaOf(configured({301, 197, 600, 370}, 900, 554), {0, 0, 1280, 720}, 1.5, 1),
               {{300, 196, 602, 372}, {903, 558}, {2, 2, 900, 554}});
    // Four of the plane are five pixels.
    expectSame(castAreaOf(configured({301, 197, 600, 370}, 750, 462), {1280, 0, 1280, 720}, 1.25, 1),
               {{1580, 196, 604, 372}, {755, 465}, {1, 1, 750, 462}});
}

TEST(CastArea, neverReachesOverTheDisplay) {
    expectSame(castAreaOf(configured({1079, 519, 201, 201}, 302, 302), {0, 0, 1280, 720}, 1.5, 1),
               {{1078, 518, 202, 202}, {303, 303}, {1, 1, 302, 302}});
}

TEST(CastArea, isTheWholeDisplayWhereNoShortStepIsAWholeNumberOfPixels) {
    const double fineness = 1499.0 / 1200;
    const auto area = castAreaOf(configured({100, 100, 200, 200}, 250, 250), {0, 0, 1200, 1200}, fineness, 1);
    ASSERT_TRUE(area);
    EXPECT_EQ(area->plane, QRect(0, 0, 1200, 1200));
    EXPECT_EQ(area->pictures, QSize(1499, 1499));
    EXPECT_EQ(area->area, QRect(125, 125, 250, 250));
}

TEST(CastArea, countsThePointsOfAnEnlargedToolkitToo) {
    expectSame(castAreaOf(configured({100, 50, 200, 100}, 600, 300), {0, 0, 1280, 720}, 1.5, 2),
               {{200, 100, 400, 200}, {600, 300}, {0, 0, 600, 300}});
}

TEST(CastArea, isNoneForAConfigurationOfAnotherScale) {
    EXPECT_FALSE(castAreaOf(configured({300, 196, 600, 370}, 600, 370), {0, 0, 1280, 720}, 1.5, 1));
    EXPECT_FALSE(castAreaOf(configured({300, 196, 600, 370}, 900, 370), {0, 0, 1280, 720}, 1.5, 1));
}

} // namespace
