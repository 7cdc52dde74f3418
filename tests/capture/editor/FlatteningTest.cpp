#include "capture/editor/Flattening.h"

#include "CanvasFixture.h"
#include "capture/editor/AnnotationRenderer.h"

#include <QColorSpace>
#include <QPainter>

#include <limits>

namespace tavrine {
namespace {

QImage base(const QSize &size = {400, 300}, const QColor &color = Qt::white) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

QRect differing(const QImage &a, const QImage &b) {
    QRect area;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.pixel(x, y) != b.pixel(x, y))
                area |= QRect(x, y, 1, 1);
        }
    }
    return area;
}

TEST(Flattening, aPictureWithoutAnnotationsKeepsItsPixels) {
    QImage picture = base();
    picture.setPixelColor(3, 4, Qt::blue);
    EXPECT_EQ(flattenedImage(picture, {}), picture);
    EXPECT_TRUE(flattenedImage({}, {stamp(1, {0.5, 0.5})}).isNull());
}

TEST(Flattening, pointsAreFractionsOfThePictureFromItsTopLeft) {
    const QImage flat =
        flattenedImage(base(), {drawing(DrawingKind::rectangle, {{0.25, 0.2}, {0.5, 0.4}}, Qt::red, 4)});
    EXPECT_EQ(differing(flat, base()), QRect(98, 58, 104, 64));
}

TEST(Flattening, laterAnnotationsLieOnEarlierOnes) {
    const auto line = [](const QColor &color) { return drawing(DrawingKind::path, {{0, 0.5}, {1, 0.5}}, color, 10); };
    EXPECT_EQ(flattenedImage(base(), {line(Qt::red), line(Qt::blue)}).pixelColor(200, 150), QColor(Qt::blue));
}

TEST(Flattening, widthsAndLettersArePointsOfThePictureAndDoNotGrowWithIt) {
    for (const QSize &size : {QSize(400, 300), QSize(1600, 1200)}) {
        const QImage flat =
            flattenedImage(base(size), {drawing(DrawingKind::path, {{0.25, 0.5}, {0.75, 0.5}}, Qt::red, 6)});
        EXPECT_EQ(differing(flat, base(size)).height(), 6);
    }
}

TEST(Flattening, aPictureOfTwoPixelsAPointStaysSoAndIsDrawnInPoints) {
    QImage picture = base({800, 600});
    picture.setDevicePixelRatio(2);
    const QImage flat = flattenedImage(picture, {drawing(DrawingKind::path, {{0.25, 0.5}, {0.75, 0.5}}, Qt::red, 6)});
    EXPECT_EQ(flat.size(), QSize(800, 600));
    EXPECT_EQ(flat.devicePixelRatio(), 2);
    EXPECT_EQ(differing(flat, picture), QRect(194, 294, 412, 12));
}

TEST(Flattening, clearPixelsStayClearAndTheColourSpaceIsKept) {
    QImage picture({100, 100}, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    picture.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
    const QImage flat = flattenedImage(picture, {stamp(1, {0.2, 0.2})});
    EXPECT_EQ(flat.pixelColor(90, 90).alpha(), 0);
    EXPECT_EQ(flat.pixelColor(20, 10).alpha(), 255);
    EXPECT_EQ(flat.colorSpace(), picture.colorSpace());
}

TEST(Flattening, aHighlighterDarkensThePictureAndLeavesBlackTextBlack) {
    QImage picture = base();
    QPainter(&picture).fillRect(190, 100, 20, 100, Qt::black);
    const QImage flat = flattenedImage(picture, {highlighter({{0.1, 0.5}, {0.9, 0.5}}, 40)});
    EXPECT_EQ(flat.pixel(100, 150), qRgb(255, 255, 153));
    EXPECT_EQ(flat.pixel(200, 150), qRgb(0, 0, 0));
}

TEST(Flattening, textAtTheTopIsWholeAndItsTopIsAtThePoint) {
    const KnownFont font;
    const QRect ink = differing(flattenedImage(base(), {written(str("Hxg"), {0.25, 0}, 10)}), base());
    const QRect lower = differing(flattenedImage(base(), {written(str("Hxg"), {0.25, 0.5}, 10)}), base());
    EXPECT_EQ(ink.translated(0, 150), lower);
    EXPECT_GE(ink.top(), 0);
}

TEST(Flattening, textThatWouldHangOverTheLowerEdgeIsHeldOnIt) {
    const KnownFont font;
    const double height = annotationTextExtent(str("Hxg"), 10).height();
    const QImage held = flattenedImage(base(), {written(str("Hxg"), {0.25, 1 - height / 300}, 10)});
    EXPECT_EQ(flattenedImage(base(), {written(str("Hxg"), {0.25, 0.99}, 10)}), held);
    EXPECT_EQ(flattenedImage(base(), {written(str("Hxg"), {0.25, 1}, 10)}), held);
    const QRect ink = differing(held, base());
    const QRect free = differing(flattenedImage(base(), {written(str("Hxg"), {0.25, 0.5}, 10)}), base());
    EXPECT_EQ(ink.size(), free.size()); // all of it is there
    EXPECT_LE(ink.bottom(), 299);
}

TEST(Cropping, takesThePixelsOfThePart) {
    QImage picture = base({1000, 500});
    picture.setPixelColor(100, 50, Qt::blue);
    picture.setPixelColor(299, 149, Qt::red);
    const std::optional<QImage> part = cropImage(picture, {0.1, 0.1, 0.2, 0.2});
    ASSERT_TRUE(part);
    EXPECT_EQ(part->size(), QSize(200, 100));
    EXPECT_EQ(part->pixelColor(0, 0), QColor(Qt::blue));
    EXPECT_EQ(part->pixelColor(199, 99), QColor(Qt::red));
}

TEST(Cropping, theWholeIsTheWhole) {
    EXPECT_EQ(cropImage(base(), {0, 0, 1, 1}), base());
}

TEST(Cropping, aPartOfTwoWholePixelsIsTooSmallAndOneOfThreeIsNot) {
    const QImage picture = base({200, 200});
    EXPECT_FALSE(cropImage(picture, {0, 0, 0.01, 0.5}));
    EXPECT_FALSE(cropImage(picture, {0, 0, 0.5, 0.01}));
    EXPECT_FALSE(cropImage(picture, {0, 0, 0.0149, 0.5}));
    EXPECT_EQ(cropImage(picture, {0, 0, 0.015, 0.5})->size(), QSize(3, 100));
}

TEST(Cropping, aHundredthOfAPictureNarrowerThanThreeHundredPixelsIsTooSmall) {
    for (const double corner : {0.0, 0.3, 0.5, 0.99}) {
        EXPECT_EQ(cropImage(base({300, 300}), {corner, corner, 0.01, 0.01})->size(), QSize(3, 3)) << corner;
        EXPECT_FALSE(cropImage(base({299, 300}), {corner, corner, 0.01, 0.01})) << corner;
        EXPECT_FALSE(cropImage(base({300, 299}), {corner, corner, 0.01, 0.01})) << corner;
    }
}

TEST(Cropping, aPictureOfTwoPixelsAPointBecomesTwiceAsLargeInPoints) {
    QImage picture = base({800, 600});
    picture.setDevicePixelRatio(2);
    const std::optional<QImage> part = cropImage(picture, {0.5, 0.5, 0.5, 0.5});
    ASSERT_TRUE(part);
    EXPECT_EQ(part->deviceIndependentSize(), QSizeF(400, 300));
}

TEST(Cropping, aPartThatBeginsWithinAPixelTakesItWhole) {
    EXPECT_EQ(cropImage(base({100, 100}), {0.105, 0.105, 0.1, 0.1})->size(), QSize(11, 11));
}

TEST(Cropping, aPartBeyondThePictureIsCutOrNone) {
    EXPECT_EQ(cropImage(base({100, 100}), {0.9, 0.9, 0.5, 0.5})->size(), QSize(10, 10));
    EXPECT_FALSE(cropImage(base({400, 400}), {1, 1, 0.01, 0.01}));
    EXPECT_FALSE(cropImage(base({400, 400}), {-1, 0, 0.5, 0.5}));
    EXPECT_FALSE(cropImage({}, {0, 0, 1, 1}));
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(cropImage(base(), {none, 0, 1, 1}));
    EXPECT_FALSE(cropImage(base(), {0, 0, none, 1}));
    EXPECT_FALSE(cropImage(base(), {0, 0, -0.5, 1}));
}

TEST(Cropping, ofAFlattenedPictureHoldsTheAnnotations) {
    const QImage flat = flattenedImage(base(), {drawing(DrawingKind::path, {{0.5, 0.5}, {0.6, 0.5}}, Qt::red, 10)});
    EXPECT_EQ(cropImage(flat, {0.5, 0.4, 0.2, 0.2})->pixelColor(20, 30), QColor(Qt::red));
}

} // namespace
} // namespace tavrine
