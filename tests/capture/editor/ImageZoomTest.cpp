#include "capture/editor/ImageZoom.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

ImageZoom shown(QSizeF image, QSizeF place = {900, 500}) {
    ImageZoom zoom;
    zoom.setPlace(place);
    zoom.setImageSize(image);
    return zoom;
}

/// The point of the picture, in its pixels, that stands at `place`.
QPointF under(const ImageZoom &zoom, QPointF place) {
    return (place - zoom.imageRect().topLeft()) / zoom.scale();
}

TEST(ImageZoom, aLargePictureIsShownWholeWithRoomRoundIt) {
    const ImageZoom zoom = shown({3840, 2160});
    const QRectF rect = zoom.imageRect();
    EXPECT_TRUE(zoom.isFit());
    EXPECT_EQ(rect.top(), ImageZoom::margin);
    EXPECT_EQ(rect.bottom(), 500 - ImageZoom::bottomMargin);
    EXPECT_NEAR(rect.center().x(), 450, 1);
    EXPECT_NEAR(rect.width() / rect.height(), 3840.0 / 2160, 0.01);
}

TEST(ImageZoom, inALowPlaceAPictureHasHalfOfIt) {
    const QRectF rect = shown({600, 300}, {500, 120}).imageRect();
    EXPECT_EQ(rect.height(), 60);
    EXPECT_GE(rect.top(), 0);
    EXPECT_LE(rect.bottom(), 120);
}

TEST(ImageZoom, aPictureThatHasRoomKeepsItsSizeInTheMiddle) {
    const ImageZoom zoom = shown({400, 300});
    EXPECT_EQ(zoom.scale(), 1);
    EXPECT_EQ(zoom.imageRect(), QRectF(250, 100, 400, 300));
}

TEST(ImageZoom, aTinyPictureGrowsUntilItCanBeDrawnOn) {
    EXPECT_EQ(shown({120, 60}).imageRect().width(), ImageZoom::smallestShown);
    EXPECT_EQ(shown({240, 60}).scale(), 1);
    EXPECT_EQ(shown({1, 1}).imageRect().size(), QSizeF(240, 240));
}

TEST(ImageZoom, aSmallPictureGrowsByWholePixelsOnly) {
    EXPECT_EQ(shown({232, 131}).scale(), 1);
    EXPECT_EQ(shown({121, 60}).scale(), 1);
    EXPECT_EQ(shown({119, 60}).scale(), 2);
    EXPECT_EQ(shown({100, 20}).scale(), 2);
}

TEST(ImageZoom, withoutAPictureOrAPlaceThereIsNothing) {
    EXPECT_TRUE(ImageZoom().imageRect().isEmpty());
    EXPECT_TRUE(shown({0, 0}).imageRect().isEmpty());
    ImageZoom zoom;
    zoom.setImageSize({100, 100});
    EXPECT_TRUE(zoom.imageRect().isEmpty());
    zoom.zoomTo(2, {0, 0});
    zoom.moveBy({5, 5});
    EXPECT_TRUE(zoom.isFit());
}

TEST(ImageZoom, whatIsUnderThePointerStaysThere) {
    ImageZoom zoom = shown({3840, 2160});
    const QPointF pointer(300, 200);
    const QPointF before = under(zoom, pointer);
    zoom.zoomTo(1, pointer);
    EXPECT_FALSE(zoom.isFit());
    EXPECT_EQ(zoom.scale(), 1);
    // The picture stands on whole points, of which each was several of its pixels before.
    EXPECT_NEAR(under(zoom, pointer).x(), before.x(), 5);
    EXPECT_NEAR(under(zoom, pointer).y(), before.y(), 5);
}

TEST(ImageZoom, thereAndBackIsWhereItWas) {
    ImageZoom zoom = shown({3840, 2160});
    zoom.zoomTo(0.8, {450, 250});
    const QRectF before = zoom.imageRect();
    zoom.zoomBy(ImageZoom::step, {500, 260});
    zoom.zoomBy(1 / ImageZoom::step, {500, 260});
    EXPECT_NEAR(zoom.imageRect().x(), before.x(), 1);
    EXPECT_NEAR(zoom.imageRect().y(), before.y(), 1);
    EXPECT_NEAR(zoom.scale(), 0.8, 1e-9);
}

TEST(ImageZoom, aLargerPictureMovesAsFarAsItsEdges) {
    ImageZoom zoom = shown({2000, 1000});
    zoom.zoomTo(1, {450, 250});
    zoom.moveBy({5000, 5000});
    EXPECT_EQ(zoom.imageRect().topLeft(), QPointF(0, 0));
    zoom.moveBy({-50, 0});
    EXPECT_EQ(zoom.imageRect().left(), -50);
    zoom.moveBy({-5000, -5000});
    EXPECT_EQ(zoom.imageRect().right(), 900);
    EXPECT_EQ(zoom.imageRect().bottom(), 500);
}

TEST(ImageZoom, aSmallerPictureDoesNotMove) {
    ImageZoom zoom = shown({400, 300});
    zoom.zoomTo(1, {0, 0});
    zoom.moveBy({100, 100});
    EXPECT_EQ(zoom.imageRect(), QRectF(250, 100, 400, 300));
}

TEST(ImageZoom, aPictureThatFitsDoesNotMove) {
    ImageZoom zoom = shown({3840, 2160});
    const QRectF before = zoom.imageRect();
    zoom.moveBy({100, 100});
    EXPECT_EQ(zoom.imageRect(), before);
    EXPECT_TRUE(zoom.isFit());
}

TEST(ImageZoom, itFitsAgainAfterFittingAndWithEachNewPicture) {
    ImageZoom zoom = shown({3840, 2160});
    const QRectF fitting = zoom.imageRect();
    zoom.zoomTo(1, {0, 0});
    zoom.fit();
    EXPECT_EQ(zoom.imageRect(), fitting);
    zoom.zoomTo(1, {0, 0});
    zoom.setImageSize({3840, 2160});
    EXPECT_TRUE(zoom.isFit());
}

TEST(ImageZoom, theScaleHasLimits) {
    ImageZoom zoom = shown({400, 300});
    zoom.zoomTo(1000, {0, 0});
    EXPECT_EQ(zoom.scale(), ImageZoom::largest);
    zoom.zoomTo(0.000001, {0, 0});
    EXPECT_EQ(zoom.scale(), ImageZoom::smallest);
}

TEST(ImageZoom, aLargePictureIsShownAsLargeAsASmallOne) {
    ImageZoom large = shown({16000, 8000});
    large.zoomTo(1, {0, 0});
    EXPECT_EQ(large.scale(), 1);
    large.zoomTo(16, {0, 0});
    EXPECT_EQ(large.scale(), 16);
}

TEST(ImageZoom, aScaleThatIsNoNumberChangesNothing) {
    ImageZoom zoom = shown({400, 300});
    for (const double scale :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 0.0, -1.0}) {
        zoom.zoomTo(scale, {0, 0});
        EXPECT_TRUE(zoom.isFit());
    }
}

TEST(ImageZoom, aPlaceTooSmallForItsMarginsStillShowsSomething) {
    const QRectF rect = shown({3840, 2160}, {30, 20}).imageRect();
    EXPECT_GE(rect.width(), 1);
    EXPECT_GE(rect.height(), 1);
}

TEST(ImageZoom, aPanoramaOfOneRowHasAHeight) {
    EXPECT_GE(shown({20'000, 1}).imageRect().height(), 1);
}

} // namespace
} // namespace tavrine
