#include "programs/screencapture/OverlayScene.h"

#include "programs/screencapture/OverlayPainter.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

const QRect monitor(0, 0, 1000, 800);
const QSize label(90, 26);

TEST(SizeLabel, standsAboveTheSelectionsLeftEnd) {
    EXPECT_EQ(sizeLabelPlace({100, 100, 300, 200}, label, monitor, {}, 1), QRect(QPoint(100, 65), label));
}

TEST(SizeLabel, goesBelowWhereAboveIsNoRoom) {
    EXPECT_EQ(sizeLabelPlace({100, 35, 300, 200}, label, monitor, {}, 1).top(), 0);
    EXPECT_EQ(sizeLabelPlace({100, 34, 300, 200}, label, monitor, {}, 1), QRect(QPoint(100, 243), label));
}

TEST(SizeLabel, goesWithinWhereTheSelectionFillsTheMonitor) {
    EXPECT_EQ(sizeLabelPlace(monitor, label, monitor, {}, 1), QRect(QPoint(9, 9), label));
}

TEST(SizeLabel, isPushedSidewaysOntoTheMonitor) {
    EXPECT_EQ(sizeLabelPlace({990, 100, 10, 10}, label, monitor, {}, 1).right(), monitor.right());
}

TEST(SizeLabel, leavesTheMagnifierFree) {
    const QRect magnifier(60, 20, 130, 60);
    const QRect place = sizeLabelPlace({100, 100, 300, 200}, label, monitor, magnifier, 1);
    EXPECT_FALSE(place.intersects(magnifier));
    EXPECT_EQ(place.top(), 309);
}

class Scenes : public testing::Test {
protected:
    static OverlayScene sceneOf(const SelectionModel &model, double scale = 1,
                                const OverlayScene::WrittenSize &writtenSize = {}) {
        const auto labelSize = [](const std::u32string &text, double factor) {
            return QSize(static_cast<int>(static_cast<double>(text.size()) * 8 * factor),
                         static_cast<int>(26 * factor));
        };
        return OverlayScene::of(model, {{monitor, scale}}, labelSize, writtenSize);
    }
    SelectionModel model{monitor, {500, 400}};
};

TEST_F(Scenes, aimingShowsLinesAMagnifierAndThePlace) {
    const OverlayScene scene = sceneOf(model);
    EXPECT_EQ(scene.clear, std::nullopt);
    EXPECT_EQ(scene.crossLines.size(), 4U);
    ASSERT_EQ(scene.labels.size(), 1U);
    EXPECT_EQ(scene.labels[0].text, U"500, 400");
}

TEST_F(Scenes, draggingShowsTheSizeInPixelsWhateverTheScale) {
    model.buttonPressed(1, {100, 100});
    model.pointerMoved({419, 339});
    for (const double scale : {1.0, 1.25, 1.5, 2.0}) {
        const OverlayScene scene = sceneOf(model, scale);
        EXPECT_EQ(scene.clear, QRect(100, 100, 320, 240));
        ASSERT_EQ(scene.labels.size(), 2U);
        EXPECT_EQ(scene.labels[1].text, U"320 × 240");
        EXPECT_TRUE(scene.crossLines.empty());
    }
}

TEST_F(Scenes, theSizeIsThatOfThePictureWhereTheScreenHasMorePixelsThanThePlane) {
    model.buttonPressed(1, {100, 100});
    model.pointerMoved({419, 339});
    const OverlayScene scene = sceneOf(model, 1, [](const QRect &area) { return area.size() * 1.5; });
    ASSERT_EQ(scene.labels.size(), 2U);
    EXPECT_EQ(scene.labels[1].text, U"480 × 360");
}

TEST_F(Scenes, pickingShowsTheWindowsSizeAndNoMagnifier) {
    model.setTargets({QRect(10, 50, 600, 500)});
    model.keyPressed(OverlayKey::space, false, false, false);
    const OverlayScene scene = sceneOf(model);
    EXPECT_TRUE(scene.isPicked);
    EXPECT_EQ(scene.magnifier, std::nullopt);
    ASSERT_EQ(scene.labels.size(), 1U);
    EXPECT_EQ(scene.labels[0].text, U"600 × 500");
}

TEST_F(Scenes, theMagnifierStandsOutsideOfTheSelection) {
    model.buttonPressed(1, {500, 400});
    for (const QPoint corner : {QPoint(700, 600), QPoint(300, 600), QPoint(700, 200), QPoint(300, 200)}) {
        model.pointerMoved(corner);
        const OverlayScene scene = sceneOf(model);
        EXPECT_FALSE(scene.magnifier->circle.intersects(*scene.clear)) << corner.x() << ", " << corner.y();
    }
}

TEST_F(Scenes, withoutAChangeNothingIsPainted) {
    EXPECT_TRUE(changedAreas(sceneOf(model), sceneOf(model)).empty());
}

/// Whatever a person does, painting only what changed gives the picture that painting everything gives.
TEST_F(Scenes, paintingTheChangesIsPaintingTheWhole) {
    constexpr int width = 500;
    constexpr int height = 400;
    std::mt19937 random(7);
    const auto upTo = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    std::vector<quint32> picture(width * height);
    for (quint32 &pixel : picture)
        pixel = random() & 0xffffff;
    std::vector<quint32> canvas(picture.size());
    std::vector<quint32> whole(picture.size());
    const PixelsToRead source{picture.data(), width, height};
    const PixelsToPaint onCanvas{canvas.data(), width, height};
    const PixelsToPaint onWhole{whole.data(), width, height};
    const std::vector<OverlayMonitor> monitors{{QRect(0, 0, 250, height), 1}, {QRect(250, 0, 250, height), 2}};
    SelectionModel hand({0, 0, width, height}, {10, 10});
    hand.setTargets({QRect(20, 20, 200, 200), QRect(100, 100, 300, 200)});
    OverlayPainter painter;
    OverlayPainter::paintDimmed(onCanvas, source);
    OverlayScene before;
    for (int step = 0; step < 120; ++step) {
        const QPoint place(upTo(width), upTo(height));
        if (step % 20 == 3)
            hand.buttonPressed(1, place);
        else if (step % 20 == 12)
            hand.keyPressed(OverlayKey::left, step % 40 == 12, false, false);
        else if (step % 20 == 17 && hand.state() != SelectionModel::State::dragging)
            hand.keyPressed(OverlayKey::space, false, false, false);
        else
            hand.pointerMoved(place);
        if (step == 60) {
            hand = SelectionModel({0, 0, width, height}, place);
            hand.setTargets({QRect(20, 20, 200, 200), QRect(100, 100, 300, 200)});
        }
        const OverlayScene scene = OverlayScene::of(
            hand, monitors, [&](const std::u32string &text, double scale) { return painter.labelSize(text, scale); });
        for (const QRect &area : changedAreas(before, scene))
            painter.paint(onCanvas, source, scene, area);
        painter.paint(onWhole, source, scene, source.rect());
        const auto different = std::mismatch(canvas.begin(), canvas.end(), whole.begin()).first - canvas.begin();
        ASSERT_EQ(different, static_cast<std::ptrdiff_t>(canvas.size()))
            << "step " << step << " at " << different % width << ", " << different / width;
        before = scene;
    }
}

TEST_F(Scenes, whatIsTakenIsShownAsItIsAndTheRestIsDimmed) {
    std::vector<quint32> picture(1000 * 800, 0x808080);
    std::vector<quint32> canvas(picture.size());
    const PixelsToRead source{picture.data(), 1000, 800};
    const PixelsToPaint target{canvas.data(), 1000, 800};
    model.buttonPressed(1, {100, 100});
    model.pointerMoved({199, 199});
    OverlayPainter painter;
    painter.paint(target, source, sceneOf(model), monitor);
    EXPECT_EQ(target.at({100, 100}), 0x808080U);
    EXPECT_EQ(target.at({199, 199}), 0x808080U);
    EXPECT_EQ(target.at({99, 150}), 0xffffffU) << "the frame is outside";
    EXPECT_EQ(target.at({50, 700}), 0x424242U);
}

} // namespace
} // namespace tavrine
