#include "capture/editor/CropSelection.h"

#include <limits>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

constexpr QSizeF shown{400, 200};

TEST(CropSelection, nothingSelectedIsTheWholePicture) {
    const CropSelection crop;
    EXPECT_TRUE(crop.isEmpty());
    EXPECT_EQ(crop.rect(), QRectF(0, 0, 1, 1));
}

TEST(CropSelection, aDragIsStoredAsFractionsOfThePicture) {
    CropSelection crop;
    crop.drag({100, 50}, {300, 150}, shown);
    EXPECT_EQ(crop.start(), QPointF(0.25, 0.25));
    EXPECT_EQ(crop.end(), QPointF(0.75, 0.75));
    EXPECT_EQ(crop.rect(), QRectF(0.25, 0.25, 0.5, 0.5));
}

TEST(CropSelection, aDragUpwardsAndToTheLeftSelectsTheSame) {
    CropSelection crop;
    crop.drag({300, 150}, {100, 50}, shown);
    EXPECT_EQ(crop.rect(), QRectF(0.25, 0.25, 0.5, 0.5));
}

TEST(CropSelection, placesOutsideThePictureCountAsItsEdge) {
    CropSelection crop;
    crop.drag({-30, -1}, {401, 5000}, shown);
    EXPECT_EQ(crop.rect(), QRectF(0, 0, 1, 1));
    crop.drag({400, 200}, {0, 0}, shown);
    EXPECT_EQ(crop.start(), QPointF(1, 1));
}

TEST(CropSelection, aClickSelectsAHundredthEachWay) {
    CropSelection crop;
    crop.drag({200, 100}, {200, 100}, shown);
    EXPECT_FALSE(crop.isEmpty());
    EXPECT_EQ(crop.rect(), QRectF(0.5, 0.5, 0.01, 0.01));
}

TEST(CropSelection, aHundredthIsTheLeastOnBothSidesOfTheLimit) {
    CropSelection crop;
    crop.drag({0, 0}, {3.9, 2.1}, shown); // 0.00975 and 0.0105
    EXPECT_DOUBLE_EQ(crop.rect().width(), 0.01);
    EXPECT_DOUBLE_EQ(crop.rect().height(), 0.0105);
}

TEST(CropSelection, whatIsNoNumberOrHasNoSizeChangesNothing) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    CropSelection crop;
    crop.drag({nan, 0}, {10, 10}, shown);
    crop.drag({0, 0}, {10, infinity}, shown);
    crop.drag({0, 0}, {10, 10}, {0, 200});
    crop.drag({0, 0}, {10, 10}, {400, nan});
    crop.drag({0, 0}, {10, 10}, {-1, 200});
    EXPECT_TRUE(crop.isEmpty());
}

TEST(CropSelection, onePlaceOutOfTwoIsNothingSelectedAfterClearing) {
    CropSelection crop;
    crop.drag({0, 0}, {10, 10}, shown);
    crop.clear();
    EXPECT_EQ(crop, CropSelection());
    EXPECT_EQ(crop.rect(), QRectF(0, 0, 1, 1));
}

} // namespace
} // namespace tavrine
