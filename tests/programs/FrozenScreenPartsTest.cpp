#include "adapters/frozen/CrossPicture.h"
#include "adapters/frozen/MagnifierGeometry.h"
#include "adapters/frozen/SamplerModel.h"
#include "adapters/x11/frozen/MonitorScale.h"
#include "adapters/x11/frozen/ScreenMap.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

const QRect monitor(0, 0, 1000, 800);
const QSize label(80, 26);

TEST(Magnifier, standsBelowAndRightOfThePixel) {
    const auto geometry = MagnifierGeometry::place({300, 300}, monitor, 1, label);
    EXPECT_EQ(geometry.circle, QRect(318, 318, 130, 130));
    EXPECT_EQ(geometry.label, QRect(343, 456, 80, 26));
}

TEST(Magnifier, showsThePixelInItsMiddle) {
    const auto geometry = MagnifierGeometry::place({300, 300}, monitor, 1, label);
    EXPECT_EQ(geometry.pixelAt(6, 6), QPoint(300, 300));
    EXPECT_EQ(geometry.pixelAt(0, 12), QPoint(294, 306));
    EXPECT_EQ(geometry.cellRect(6, 6).center() - geometry.circle.center(), QPoint(0, 0));
}

TEST(Magnifier, staysOnTheMonitorAndOffThePixelEverywhere) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0})
        for (const QPoint outward : {QPoint(1, 1), QPoint(-1, 1), QPoint(1, -1), QPoint(-1, -1)})
            for (int x = 0; x < 1000; x += 37)
                for (int y = 0; y < 800; y += 31) {
                    const auto geometry = MagnifierGeometry::place({x, y}, monitor, scale, label, outward);
                    const QRect all = geometry.circle.united(geometry.label);
                    ASSERT_TRUE(monitor.contains(all)) << x << ", " << y << " at " << scale;
                    ASSERT_FALSE(all.contains(x, y)) << x << ", " << y << " at " << scale;
                }
}

TEST(Magnifier, changesSidesExactlyWhereItsRoomEnds) {
    EXPECT_EQ(MagnifierGeometry::place({852, 300}, monitor, 1, label).circle.left(), 870);
    EXPECT_EQ(MagnifierGeometry::place({853, 300}, monitor, 1, label).circle.right(), 853 - 18);
}

TEST(Magnifier, staysOnASecondMonitor) {
    const QRect second(1000, 200, 500, 500);
    EXPECT_TRUE(second.contains(MagnifierGeometry::place({1499, 699}, second, 2, label).circle));
}

TEST(MonitorScale, isNinetySixDotsAnInchByDefault) {
    EXPECT_EQ(monitorScale({}, "", 0), 1);
    EXPECT_EQ(monitorScale({144.0, "", ""}, "", 0), 1.5);
    EXPECT_EQ(monitorScale({96.0, "2", ""}, "", 0), 2);
    EXPECT_EQ(monitorScale({192.0, "1.25", ""}, "", 0), 2.5);
}

TEST(MonitorScale, takesWhatIsToldForTheMonitorByPlaceOrName) {
    EXPECT_EQ(monitorScale({192.0, "", "1;1.5"}, "", 0), 1);
    EXPECT_EQ(monitorScale({192.0, "", "1;1.5"}, "", 1), 1.5);
    EXPECT_EQ(monitorScale({192.0, "", "1;1.5"}, "", 2), 2) << "not told: the dots an inch";
    EXPECT_EQ(monitorScale({{}, "", "DP-1=2;HDMI-1=1.25"}, "HDMI-1", 0), 1.25);
    EXPECT_EQ(monitorScale({{}, "", "DP-1=2;HDMI-1=1.25"}, "eDP-1", 0), 1);
}

TEST(MonitorScale, keepsWithinOneAndFourAndIgnoresNonsense) {
    EXPECT_EQ(monitorScale({48.0, "", ""}, "", 0), 1);
    EXPECT_EQ(monitorScale({{}, "9", ""}, "", 0), 4);
    for (const char *const wrong : {"", "x", "-2", "0", "2x", "nan", "inf", ";;", "="})
        EXPECT_EQ(monitorScale({{}, wrong, wrong}, "a", 0), 1) << wrong;
}

TEST(MonitorScale, readsTheResourcesOfTheDesktop) {
    EXPECT_EQ(dotsPerInchOf("Xft.antialias:\t1\nXft.dpi:\t192\nXcursor.size:\t48\n"), 192);
    EXPECT_EQ(dotsPerInchOf("Xft.dpi: 120"), 120);
    EXPECT_EQ(dotsPerInchOf("Xft.dpi: many\n"), std::nullopt);
    EXPECT_EQ(dotsPerInchOf("notXft.dpi: 120"), std::nullopt);
    EXPECT_EQ(dotsPerInchOf(""), std::nullopt);
}

TEST(CrossCursor, coversNoPixelThatIsAimedAt) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0, 3.0}) {
        const CrossPicture picture = CrossPicture::make(scale);
        ASSERT_EQ(picture.pixels.size(), static_cast<size_t>(picture.side * picture.side));
        EXPECT_EQ(picture.side % 2, 1);
        EXPECT_EQ(picture.pixels[picture.pixels.size() / 2], 0U);
        EXPECT_EQ(picture.pixels[static_cast<size_t>(picture.side / 2 * picture.side + 1)], 0xffffffffU);
    }
}

class Sampler : public testing::Test {
protected:
    SamplerModel model{monitor, {10, 20}};
};

TEST_F(Sampler, aClickTakesThePixel) {
    model.buttonPressed(1, {30, 40});
    EXPECT_EQ(model.state(), SamplerModel::State::aiming);
    model.buttonReleased(1, {31, 40});
    EXPECT_EQ(model.state(), SamplerModel::State::taken);
    EXPECT_EQ(model.pixel(), QPoint(31, 40));
}

TEST_F(Sampler, returnAndSpaceTakeEscapeAndARightClickCancel) {
    for (const OverlayKey key : {OverlayKey::enter, OverlayKey::space}) {
        SamplerModel each = model;
        each.keyPressed(key, false);
        EXPECT_EQ(each.state(), SamplerModel::State::taken);
    }
    SamplerModel clicked = model;
    clicked.buttonPressed(3, {1, 1});
    clicked.buttonReleased(3, {1, 1});
    EXPECT_EQ(clicked.state(), SamplerModel::State::cancelled);
    model.keyPressed(OverlayKey::escape, false);
    EXPECT_EQ(model.state(), SamplerModel::State::cancelled);
}

TEST_F(Sampler, arrowKeysMoveByAPixelAndWithControlByTen) {
    model.keyPressed(OverlayKey::right, false);
    EXPECT_EQ(model.takePointerMove(), QPoint(11, 20));
    model.keyPressed(OverlayKey::down, true);
    EXPECT_EQ(model.takePointerMove(), QPoint(11, 30));
    EXPECT_EQ(model.takePointerMove(), std::nullopt);
}

TEST_F(Sampler, staysOnTheScreen) {
    model.pointerMoved({-5, 4000});
    EXPECT_EQ(model.pixel(), QPoint(0, 799));
    model.keyPressed(OverlayKey::left, false);
    EXPECT_EQ(model.pixel(), QPoint(0, 799));
    EXPECT_EQ(model.takePointerMove(), std::nullopt);
}

TEST_F(Sampler, aReleaseWithoutItsPressMeansNothing) {
    model.buttonReleased(1, {1, 1});
    model.buttonReleased(3, {1, 1});
    model.buttonPressed(2, {1, 1});
    model.buttonReleased(2, {1, 1});
    EXPECT_EQ(model.state(), SamplerModel::State::aiming);
}

TEST(ScreenMap, anAreaHasTheLargestScaleOfTheMonitorsThatItTouches) {
    const std::vector<OverlayMonitor> monitors{{{0, 0, 100, 100}, 1}, {{100, 0, 200, 200}, 2}, {{300, 0, 9, 9}, 1.5}};
    EXPECT_EQ(largestScale(monitors, {0, 0, 100, 100}), 1);
    EXPECT_EQ(largestScale(monitors, {99, 0, 2, 2}), 2);
    EXPECT_EQ(largestScale(monitors, {300, 0, 2, 2}), 1.5);
    EXPECT_EQ(largestScale(monitors, {0, 150, 10, 10}), 1);
}

} // namespace
} // namespace tavrine
