#include "adapters/fake/FakeImageCoder.h"
#include "adapters/linux/TurboImageCoder.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QImageWriter>
#include <QTemporaryDir>

#include <cmath>
#include <random>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tavrine {
namespace {

/// What a camera gives: soft shapes under noise. The same for the same size.
QImage noisyPicture(int width, int height, int noise = 60) {
    QImage image(width, height, QImage::Format_RGB32);
    std::minstd_rand random(7);
    for (int y = 0; y < height; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int base = 100 + static_cast<int>(60 * std::sin(x * 0.01) * std::cos(y * 0.013));
            const auto channel = [&] { return base + static_cast<int>(random() % static_cast<unsigned>(noise + 1)); };
            line[x] = qRgb(channel(), channel(), channel());
        }
    }
    return image;
}

class Files : public testing::Test {
protected:
    QString write(const QByteArray &data) {
        const QString path = folder.filePath(QStringLiteral("file.jpg"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(data), data.size());
        return path;
    }
    QString writePng(const QImage &image) {
        const QString path = folder.filePath(QStringLiteral("file.png"));
        EXPECT_TRUE(image.save(path));
        return path;
    }
    QTemporaryDir folder;
};

template <class Coder>
class ImageCoderContract : public Files {
protected:
    QByteArray encode(const QImage &image, double factor = 0.82) {
        return coder.bitmapRepresentation(image)->encode(factor).value();
    }
    Coder coder;
};

using Coders = testing::Types<FakeImageCoder, TurboImageCoder>;
TYPED_TEST_SUITE(ImageCoderContract, Coders);

TYPED_TEST(ImageCoderContract, whatItEncodesItReadsInTheSameSize) {
    const QString path = this->write(this->encode(noisyPicture(301, 97)));
    EXPECT_EQ(this->coder.load(path)->size(), QSize(301, 97));
}

TYPED_TEST(ImageCoderContract, aPictureOfOnePixelIsAPicture) {
    EXPECT_EQ(this->coder.load(this->write(this->encode(noisyPicture(1, 1))))->size(), QSize(1, 1));
}

TYPED_TEST(ImageCoderContract, aSmallerFactorGivesLessData) {
    const QImage image = noisyPicture(400, 300);
    EXPECT_GT(this->encode(image, 0.82).size(), this->encode(image, 0.07).size());
}

TYPED_TEST(ImageCoderContract, theTiffFormGivesAPictureToo) {
    const auto source = this->coder.tiffRepresentation(noisyPicture(30, 20));
    ASSERT_TRUE(source);
    EXPECT_EQ(this->coder.load(this->write(source->encode(0.82).value()))->size(), QSize(30, 20));
}

TYPED_TEST(ImageCoderContract, anImageWithoutSizeHasNoRepresentation) {
    EXPECT_EQ(this->coder.bitmapRepresentation(QImage()), nullptr);
    EXPECT_EQ(this->coder.tiffRepresentation(QImage()), nullptr);
}

TYPED_TEST(ImageCoderContract, whatIsSaidToBeCertainlyLargerIsLarger) {
    for (const QSize size : {QSize(40, 30), QSize(1200, 900), QSize(901, 1603)}) {
        const auto source = this->coder.bitmapRepresentation(noisyPicture(size.width(), size.height()));
        for (const double factor : {0.82, 0.37, 0.07}) {
            const qsizetype whole = source->encode(factor)->size();
            EXPECT_FALSE(source->isCertainlyLargerThan(whole, factor));
            EXPECT_FALSE(source->isCertainlyLargerThan(whole * 2, factor));
        }
    }
}

TYPED_TEST(ImageCoderContract, theLongerEdgeOfAThumbnailIsBounded) {
    EXPECT_EQ(this->coder.thumbnail(this->write(this->encode(noisyPicture(1000, 500))), 480)->size(), QSize(480, 240));
    EXPECT_EQ(this->coder.thumbnail(this->write(this->encode(noisyPicture(500, 1000))), 480)->size(), QSize(240, 480));
}

TYPED_TEST(ImageCoderContract, aSmallerPictureKeepsItsSizeAsThumbnail) {
    EXPECT_EQ(this->coder.thumbnail(this->write(this->encode(noisyPicture(480, 480))), 480)->size(), QSize(480, 480));
    EXPECT_EQ(this->coder.thumbnail(this->write(this->encode(noisyPicture(3, 2))), 480)->size(), QSize(3, 2));
}

TYPED_TEST(ImageCoderContract, aVeryNarrowPictureStillHasAThumbnail) {
    EXPECT_EQ(this->coder.thumbnail(this->write(this->encode(noisyPicture(3000, 1))), 480)->size(), QSize(480, 1));
}

TYPED_TEST(ImageCoderContract, whatIsNoPictureGivesNone) {
    const QString missing = this->folder.filePath(QStringLiteral("missing.jpg"));
    const QString text = this->write("no picture");
    for (const QString &path : {missing, text, this->folder.path(), QString()}) {
        EXPECT_EQ(this->coder.load(path), std::nullopt) << qPrintable(path);
        EXPECT_EQ(this->coder.thumbnail(path, 480), std::nullopt) << qPrintable(path);
    }
    EXPECT_EQ(this->coder.load(this->write("")), std::nullopt);
}

TYPED_TEST(ImageCoderContract, aPipeIsNotWaitedFor) {
    const QString pipe = this->folder.filePath(QStringLiteral("pipe.jpg"));
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_EQ(this->coder.load(pipe), std::nullopt);
    EXPECT_EQ(this->coder.thumbnail(pipe, 480), std::nullopt);
}

// The real coder alone.

class TurboCoder : public Files {
protected:
    QImage roundTrip(const QImage &image, double factor = 0.82) {
        return coder.load(write(coder.bitmapRepresentation(image)->encode(factor).value())).value();
    }
    TurboImageCoder coder;
};

void expectNear(QColor color, QColor expected) {
    EXPECT_NEAR(color.red(), expected.red(), 4) << qPrintable(color.name());
    EXPECT_NEAR(color.green(), expected.green(), 4) << qPrintable(color.name());
    EXPECT_NEAR(color.blue(), expected.blue(), 4) << qPrintable(color.name());
}

TEST_F(TurboCoder, coloursSurviveInEveryFormatOfAnImage) {
    const QColor orange(250, 130, 20);
    for (const QImage::Format format :
         {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_ARGB32_Premultiplied, QImage::Format_RGB888,
          QImage::Format_BGR888, QImage::Format_RGBA8888, QImage::Format_RGB16, QImage::Format_RGBA64,
          QImage::Format_Indexed8, QImage::Format_BGR30}) {
        QImage image(33, 31, QImage::Format_RGB32);
        image.fill(orange);
        const QImage converted = image.convertToFormat(format);
        const QImage result = roundTrip(converted);
        SCOPED_TRACE(static_cast<int>(format));
        ASSERT_EQ(result.size(), image.size());
        expectNear(result.pixelColor(16, 16), converted.pixelColor(16, 16));
    }
    QImage gray(33, 31, QImage::Format_Grayscale8);
    gray.fill(77);
    expectNear(roundTrip(gray).pixelColor(16, 16), QColor(77, 77, 77));
}

TEST_F(TurboCoder, transparentPixelsBecomeWhite) {
    QImage image(64, 64, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    expectNear(roundTrip(image).pixelColor(32, 32), Qt::white);
    image.fill(QColor(0, 0, 0, 128));
    expectNear(roundTrip(image).pixelColor(32, 32), QColor(127, 127, 127));
    image.fill(QColor(20, 40, 200, 255));
    expectNear(roundTrip(image).pixelColor(32, 32), QColor(20, 40, 200));
}

TEST_F(TurboCoder, rowsBeyondOneStripOfTheConversionStandInTheirPlace) {
    QImage image(40, 1030, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixelColor(x, y, QColor(y / 5, 255 - y / 5, 100));
    }
    const QImage result = roundTrip(image);
    for (const int y : {0, 255, 256, 511, 512, 1024, 1029})
        expectNear(result.pixelColor(20, y), image.pixelColor(20, y));
}

TEST_F(TurboCoder, aPartOfAPictureIsEncodedFromItsOwnRows) {
    const QImage whole = noisyPicture(200, 300);
    const QImage part(whole.constScanLine(3) + 7 * 4, 100, 200, whole.bytesPerLine(), whole.format());
    EXPECT_EQ(roundTrip(part).size(), part.size());
    expectNear(roundTrip(part).scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).pixelColor(0, 0),
               part.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).pixelColor(0, 0));
}

TEST_F(TurboCoder, aLargeNoisyPictureIsKnownToBeTooLargeFromAPart) {
    const auto source = coder.bitmapRepresentation(noisyPicture(2000, 1500));
    ASSERT_GT(source->encode(0.82)->size(), 400'000);
    EXPECT_TRUE(source->isCertainlyLargerThan(200'000, 0.82));
}

qint64 residentBytes() {
    QFile file(QStringLiteral("/proc/self/statm"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() * 4096 : 0;
}

TEST_F(TurboCoder, besideALargePictureNothingIsKept) {
    QImage image(6000, 5400, QImage::Format_RGB32);
    ASSERT_GT(qint64{image.width()} * image.height(), TurboImageCoder::planesPixels);
    image.fill(QColor(250, 130, 20));
    const qint64 before = residentBytes();
    const auto source = coder.bitmapRepresentation(image);
    ASSERT_TRUE(source);
    EXPECT_LT(residentBytes() - before, 5'000'000) << "planes would be 48 MB";
    const std::optional<QByteArray> jpeg = source->encode(0.82);
    ASSERT_TRUE(jpeg);
    EXPECT_LT(residentBytes() - before, 5'000'000 + 2 * jpeg->size());
    const QImage result = QImage::fromData(*jpeg);
    EXPECT_EQ(result.size(), image.size());
    expectNear(result.pixelColor(3000, 2700), QColor(250, 130, 20));
}

TEST_F(TurboCoder, aPictureBeyondTheEdgesOfJpegHasNoRepresentation) {
    EXPECT_NE(coder.bitmapRepresentation(QImage(65'500, 1, QImage::Format_RGB32)), nullptr);
    EXPECT_EQ(coder.bitmapRepresentation(QImage(65'501, 1, QImage::Format_RGB32)), nullptr);
    EXPECT_EQ(coder.bitmapRepresentation(QImage(1, 65'501, QImage::Format_RGB32)), nullptr);
}

TEST_F(TurboCoder, aPictureIsReadUpright) {
    const QString path = folder.filePath(QStringLiteral("turned.jpg"));
    QImageWriter writer(path, "jpg");
    writer.setTransformation(QImageIOHandler::TransformationRotate90);
    ASSERT_TRUE(writer.write(noisyPicture(1000, 600)));
    EXPECT_EQ(coder.load(path)->size(), QSize(600, 1000));
    EXPECT_EQ(coder.thumbnail(path, 480)->size(), QSize(288, 480));
}

TEST_F(TurboCoder, thePictureIsKnownByItsContentNotItsName) {
    const QString png = writePng(noisyPicture(50, 40));
    const QString path = folder.filePath(QStringLiteral("named.jpg"));
    ASSERT_TRUE(QFile::rename(png, path));
    EXPECT_EQ(coder.load(path)->size(), QSize(50, 40));
}

TEST_F(TurboCoder, aFileCutShortGivesAPictureOrNoneButReturns) {
    const QByteArray jpeg = coder.bitmapRepresentation(noisyPicture(300, 200))->encode(0.82).value();
    for (const double share : {0.01, 0.1, 0.5, 0.99}) {
        const auto image = coder.load(write(jpeg.first(static_cast<qsizetype>(jpeg.size() * share))));
        EXPECT_TRUE(!image || image->size() == QSize(300, 200)) << share;
    }
}

TEST_F(TurboCoder, aPictureOfMoreThanTheCapIsNotDecoded) {
    QImage within(12'800, 10'000, QImage::Format_Mono); // 128 million pixels, and little memory
    within.fill(0);
    EXPECT_EQ(coder.load(writePng(within))->size(), within.size());
    QImage beyond(12'800, 10'001, QImage::Format_Mono);
    beyond.fill(0);
    EXPECT_EQ(coder.load(writePng(beyond)), std::nullopt);
    EXPECT_EQ(coder.thumbnail(writePng(beyond), 480), std::nullopt);
    EXPECT_EQ(coder.bitmapRepresentation(beyond), nullptr);
}

} // namespace
} // namespace tavrine
