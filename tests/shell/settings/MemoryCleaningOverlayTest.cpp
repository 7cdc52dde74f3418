// What says over the settings that the history is gone, frame by frame.

#include "look/Button.h"
#include "look/Look.h"
#include "shell/settings/MemoryCleaningOverlayView.h"
#include "shell/settings/SettingsWindowTest.h"
#include "support/PaintedWords.h"

#include <cmath>
#include <numbers>

namespace tavrine {
namespace {

constexpr double flight = 96; // where a spark ends

class MemoryCleaning : public SettingsWindowTest {
protected:
    void clear() {
        go(SidebarItem::features);
        overlay = view().findChild<MemoryCleaningOverlay *>();
        ASSERT_TRUE(overlay);
        EXPECT_FALSE(overlay->isVisible());
        desktop.alerts().answerNextWithFirstButton();
        quietly([this] { find<look::Button>("Clear & Disable")->click(); });
    }
    void pass(int frames) {
        quietly([&] { time.advance(look::MotionClock::frame * frames); });
        passed += look::MotionClock::frame * frames;
    }
    [[nodiscard]] QImage picture() const { return overlay->grab().toImage().convertToFormat(QImage::Format_RGB32); }
    [[nodiscard]] QPoint centre() const { return {overlay->width() / 2, overlay->height() / 2 - 40}; }
    static bool isGreen(QRgb pixel) { return qGreen(pixel) > qRed(pixel) + 30 && qGreen(pixel) > qBlue(pixel) + 30; }
    /// How far to the right of the middle the last green point is, within so many points.
    [[nodiscard]] int greenReach(const QImage &image, int within) const {
        int reach = -1;
        for (int x = 0; x <= within; ++x)
            if (isGreen(image.pixel(centre() + QPoint(x, 0))))
                reach = x;
        return reach;
    }
    [[nodiscard]] std::vector<test::PaintedWord> words() const {
        test::WordsDevice device(overlay->size());
        overlay->render(&device);
        return device.painted();
    }
    [[nodiscard]] double opacity() const { return words().empty() ? 0 : words().front().colour.alphaF(); }

    look::Look look{time};
    MemoryCleaningOverlay *overlay = nullptr;
    Seconds passed{0};
};

TEST_F(MemoryCleaning, comesOverTheWindowAndSaysWhatItWas) {
    clear();
    EXPECT_TRUE(overlay->isVisible());
    EXPECT_EQ(overlay->geometry(), view().rect());
    pass(100);
    QStringList texts;
    for (const test::PaintedWord &each : words())
        texts.append(each.text);
    EXPECT_EQ(texts, (QStringList{text("Memory Cleared"), text("Clipboard history deleted")}));
    EXPECT_EQ(overlay->accessibleName(), text("Memory Cleared"));
}

TEST_F(MemoryCleaning, comesInASpringAndGoesInHalfASecond) {
    clear();
    const look::Spring spring = look::Spring::responding(0.4, 0.7);
    for (int frame = 0; frame < 12; ++frame) {
        pass(1);
        EXPECT_NEAR(opacity(), std::clamp(spring.at(passed), 0.0, 1.0), 0.01) << frame;
    }
    pass(150 - 12); // 2.4 seconds in all
    ASSERT_NEAR(passed.count(), 2.4, 1e-9);
    EXPECT_NEAR(opacity(), 1, 0.01);
    passed = Seconds{0};
    for (int frame = 0; frame < 30; ++frame) {
        pass(1);
        EXPECT_NEAR(opacity(), 1 - look::easeOut.at(passed / Seconds(0.5)), 0.01) << frame;
    }
    EXPECT_TRUE(overlay->isVisible());
    pass(2);
    EXPECT_FALSE(overlay->isVisible());
}

TEST_F(MemoryCleaning, eightSparksFlyOffABadgeInASpringOfTheirOwn) {
    clear();
    const look::Spring spring = look::Spring::responding(0.55, 0.65);
    for (int frame = 6; frame <= 24; frame += 6) {
        pass(6);
        EXPECT_NEAR(greenReach(picture(), 130), flight * spring.at(passed) + 4, 2) << frame;
    }
    pass(100);
    const QImage image = picture();
    const auto at = [&](double angle, double distance) {
        const double radians = angle * std::numbers::pi / 180;
        return image.pixel(centre() + QPoint(int(std::lround(std::cos(radians) * distance)),
                                             int(std::lround(std::sin(radians) * distance))));
    };
    for (int spark = 0; spark < 8; ++spark) {
        EXPECT_TRUE(isGreen(at(45.0 * spark, flight))) << spark;
        EXPECT_FALSE(isGreen(at(45.0 * spark + 22.5, flight))) << spark;
    }
    // The badge, 120 points wide, on the ground.
    EXPECT_NE(at(22.5, 58), at(22.5, 62));
    EXPECT_EQ(at(22.5, 62), at(22.5, 80));
    EXPECT_EQ(at(22.5, 58), at(22.5, 40));
}

TEST_F(MemoryCleaning, theCheckFollowsTheBurst) {
    clear();
    pass(9); // 0.144 s
    EXPECT_EQ(greenReach(picture(), 30), -1);
    const look::Spring spring = look::Spring::responding(0.4, 0.6);
    std::vector<std::pair<double, int>> reaches;
    for (int step = 0; step < 3; ++step) {
        pass(5);
        reaches.emplace_back(spring.at(passed - Seconds(0.15)), greenReach(picture(), 40));
    }
    pass(100);
    const int last = greenReach(picture(), 40);
    EXPECT_GE(last, 18); // of 52 points, less the symbol's own margin
    EXPECT_LE(last, 26);
    for (const auto &[scale, reach] : reaches)
        EXPECT_NEAR(reach, last * scale, 2) << scale;
}

} // namespace
} // namespace tavrine
