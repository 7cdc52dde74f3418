#include "capture/editor/ImageOpening.h"

#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakePasteboard.h"
#include "ports/ImageCoder.h"

#include <QMimeData>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

// One bit a pixel: even the largest ones fit into a few megabytes.
QImage wide(qint64 pixels) {
    constexpr int height = 1000;
    return {static_cast<int>(pixels / height), height, QImage::Format_Mono};
}

TEST(ImageOpening, asManyPixelsAsThereMayBeAreTakenAndOneRowMoreIsNot) {
    FakePasteboard pasteboard;
    pasteboard.copyFromOutside(wide(maxImagePixels));
    EXPECT_TRUE(imageOpening::fromPasteboard(pasteboard));
    pasteboard.copyFromOutside(wide(maxImagePixels + 1000));
    EXPECT_FALSE(imageOpening::fromPasteboard(pasteboard));
}

TEST(ImageOpening, anEnormousDropIsNotTaken) {
    FakeImageCoder coder;
    QMimeData data;
    data.setImageData(wide(maxImagePixels));
    EXPECT_TRUE(imageOpening::fromDrop(coder, data));
    data.setImageData(wide(maxImagePixels + 1000));
    EXPECT_FALSE(imageOpening::fromDrop(coder, data));
}

TEST(ImageOpening, aCaptureThatComesBackHasItsScaleAgain) {
    QImage capture = wide(200'000);
    capture.setDotsPerMeterX(7559);
    capture.setDotsPerMeterY(7559);
    FakePasteboard pasteboard;
    pasteboard.copyFromOutside(capture);
    EXPECT_EQ(imageOpening::fromPasteboard(pasteboard)->devicePixelRatio(), 2);
    FakeImageCoder coder;
    QMimeData data;
    data.setImageData(capture);
    EXPECT_EQ(imageOpening::fromDrop(coder, data)->devicePixelRatio(), 2);
}

TEST(ImageOpening, aFileThatIsMissingOrAFolderGivesNothing) {
    FakeImageCoder coder;
    EXPECT_FALSE(imageOpening::fromFile(coder, QStringLiteral("/nowhere/a.png")));
    EXPECT_FALSE(imageOpening::fromFile(coder, QStringLiteral("/")));
    EXPECT_FALSE(imageOpening::fromFile(coder, QString()));
}

} // namespace
} // namespace tavrine
