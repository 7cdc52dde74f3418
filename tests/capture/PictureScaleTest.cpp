#include "capture/PictureScale.h"

#include "SnipTest.h"
#include "capture/PngData.h"

namespace tavrine {
namespace {

QImage withDots(double perInch) {
    QImage image = picture(40, 30);
    image.setDotsPerMeterX(int(std::lround(perInch / 0.0254)));
    image.setDotsPerMeterY(int(std::lround(perInch / 0.0254)));
    return image;
}

double scaleOf(double dotsPerInch, PictureSource source) {
    return withScaleOfItsFile(withDots(dotsPerInch), source).devicePixelRatio();
}

TEST(PictureScale, dotsPerInchOfDesktopsAreScales) {
    for (const auto source : {PictureSource::captureTool, PictureSource::elsewhere}) {
        EXPECT_EQ(scaleOf(96, source), 1);
        EXPECT_EQ(scaleOf(120, source), 1.25);
        EXPECT_EQ(scaleOf(192, source), 2);
        EXPECT_EQ(scaleOf(384, source), 4);
    }
}

TEST(PictureScale, anOddScaleIsBelievedOfOurOwnToolAlone) {
    EXPECT_NEAR(scaleOf(110, PictureSource::captureTool), 110.0 / 96, 0.001);
    EXPECT_EQ(scaleOf(110, PictureSource::elsewhere), 1);
    EXPECT_EQ(scaleOf(300, PictureSource::elsewhere), 1) << "as scanners write";
}

TEST(PictureScale, aScreensScaleWithLargerTextOnTopIsBelievedOfOurOwnToolAlone) {
    EXPECT_EQ(scaleOf(480, PictureSource::captureTool), 5);
    EXPECT_EQ(scaleOf(96 * 12, PictureSource::captureTool), 12);
    EXPECT_EQ(scaleOf(480, PictureSource::elsewhere), 1);
}

TEST(PictureScale, whatIsNoScaleOfADesktopIsNone) {
    for (const double dots : {0.0, 24.0, 72.0, 96 * 12.25, 5000.0})
        EXPECT_EQ(scaleOf(dots, PictureSource::captureTool), 1) << dots;
    QImage image = withDots(192);
    image.setDotsPerMeterY(3780); // pixels that are no squares
    EXPECT_EQ(withScaleOfItsFile(image, PictureSource::captureTool).devicePixelRatio(), 1);
}

TEST(PictureScale, aScaleGoesThroughAPngAndIsTakenAway) {
    const QImage image = withScaleOfItsFile(withDots(192), PictureSource::captureTool);
    const QImage read = withScaleOfItsFile(QImage::fromData(*pngData(image)), PictureSource::elsewhere);
    EXPECT_EQ(read.devicePixelRatio(), 2);
    EXPECT_EQ(read.size(), QSize(40, 30));
    EXPECT_EQ(withScaleOfItsFile(QImage::fromData(*pngData(withoutScale(read))), PictureSource::captureTool)
                  .devicePixelRatio(),
              1);
    EXPECT_EQ(withoutScale(read).devicePixelRatio(), 1);
}

} // namespace
} // namespace tavrine
