#include "capture/editor/PictureLevels.h"

#include <QPainter>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

QImage pattern(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x * 7 & 255, y * 5 & 255, (x ^ y) & 255));
    return image;
}

QImage painted(const PictureLevels &levels, const QRectF &whole, const QSize &size) {
    QImage to(size, QImage::Format_RGB32);
    to.fill(Qt::magenta);
    QPainter painter(&to);
    levels.paint(painter, whole, to.rect(), 1);
    return to;
}

TEST(PictureLevels, aPictureAtItsOwnSizeIsPaintedPixelForPixel) {
    const QImage picture = pattern(300, 200);
    EXPECT_EQ(painted(picture, {0, 0, 300, 200}, {300, 200}), picture);
    EXPECT_EQ(painted(picture, {-120, -50, 300, 200}, {80, 60}), picture.copy(120, 50, 80, 60));
}

TEST(PictureLevels, onlyThePictureIsPainted) {
    const QImage to = painted(pattern(30, 20), {10, 10, 30, 20}, {60, 40});
    EXPECT_EQ(to.pixel(5, 20), qRgb(255, 0, 255));
    EXPECT_EQ(to.pixel(10, 10), pattern(1, 1).pixel(0, 0));
}

TEST(PictureLevels, muchLargerItShowsSquaresAndSomewhatLargerItIsSmooth) {
    QImage two(2, 1, QImage::Format_RGB32);
    two.setPixel(0, 0, qRgb(0, 0, 0));
    two.setPixel(1, 0, qRgb(255, 255, 255));
    const QImage squares = painted(two, {0, 0, 6, 3}, {6, 3});
    EXPECT_EQ(squares.pixel(2, 1), qRgb(0, 0, 0));
    EXPECT_EQ(squares.pixel(3, 1), qRgb(255, 255, 255));
    const QImage smooth = painted(two, {0, 0, 5, 2.5}, {5, 2});
    EXPECT_GT(qRed(smooth.pixel(2, 1)), 60);
    EXPECT_LT(qRed(smooth.pixel(2, 1)), 200);
}

TEST(PictureLevels, aPartOfAPictureThatIsSixteenTimesAsLargeIsSharp) {
    const QImage picture = pattern(4000, 2000);
    const QImage seen = painted(picture, {-30000, -16000, 64000, 32000}, {64, 64});
    EXPECT_EQ(seen.pixel(0, 0), picture.pixel(1875, 1000));
    EXPECT_EQ(seen.pixel(15, 15), picture.pixel(1875, 1000));
    EXPECT_EQ(seen.pixel(16, 16), picture.pixel(1876, 1001));
    EXPECT_EQ(seen.pixel(63, 63), picture.pixel(1878, 1003));
}

TEST(PictureLevels, muchSmallerEveryPixelCounts) {
    QImage checks(512, 512, QImage::Format_RGB32);
    for (int y = 0; y < 512; ++y)
        for (int x = 0; x < 512; ++x)
            checks.setPixel(x, y, (x + y) % 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
    const QImage small = painted(checks, {0, 0, 100, 100}, {100, 100});
    for (int i = 10; i < 90; i += 7)
        EXPECT_NEAR(qRed(small.pixel(i, 2 * i % 90)), 128, 12);
}

TEST(PictureLevels, withoutAPictureNothingIsPainted) {
    EXPECT_TRUE(PictureLevels().isNull());
    EXPECT_TRUE(PictureLevels(QImage()).isNull());
    EXPECT_EQ(painted(QImage(), {0, 0, 9, 9}, {9, 9}).pixel(4, 4), qRgb(255, 0, 255));
}

} // namespace
} // namespace tavrine
