#include "adapters/pasteboard/PasteboardImage.h"

#include "adapters/linux/TurboImageCoder.h"
#include "adapters/pasteboard/SelectionLimits.h"
#include "adapters/pasteboard/TestPictures.h"

#include <QBuffer>
#include <QFile>
#include <QImageWriter>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tavrine::pasteboardImage {
namespace {

QImage picture(int width = 20, int height = 10) {
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixelColor(x, y, QColor(x * 7 % 256, y * 13 % 256, (x * y) % 256));
    }
    return image;
}

QByteArray encoded(const char *format, const QImage &image = picture()) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

TEST(PasteboardImage, everyFormatThatIsOfferedIsRead) {
    for (const char *format : {"png", "bmp", "tiff", "webp", "jpeg"}) {
        const QByteArray bytes = encoded(format);
        ASSERT_FALSE(bytes.isEmpty()) << format;
        EXPECT_EQ(formatOf(bytes), format);
        EXPECT_TRUE(hasUsableHeader(bytes, 1000)) << format;
        ASSERT_TRUE(decode(bytes, 1000)) << format;
        EXPECT_EQ(decode(bytes, 1000)->size(), QSize(20, 10)) << format;
    }
}

TEST(PasteboardImage, whatIsNoPictureIsRefusedWithoutADecoder) {
    for (const char *bytes : {"", "<svg/>", "hello", "\x89PNG", "RIFFxxxxWAVE", "P6 1 1 255\n"}) {
        EXPECT_TRUE(formatOf(bytes).isEmpty()) << bytes;
        EXPECT_FALSE(decode(bytes, 1000)) << bytes;
    }
}

TEST(PasteboardImage, asManyPixelsAsAllowedAreDecodedAndNotOneMore) {
    EXPECT_TRUE(decode(encoded("png"), 200));
    EXPECT_FALSE(decode(encoded("png"), 199));
    EXPECT_TRUE(hasUsableHeader(encoded("png"), 200));
    EXPECT_FALSE(hasUsableHeader(encoded("png"), 199));
}

TEST(PasteboardImage, anAnimationWhoseScreenIsLargerThanItsFirstFrameIsNoWayRoundThat) {
    // A screen of 5 by 65,285, and a frame of 5 by 5.
    const QByteArray bytes("GIF89a\5\0\x05\xFF\0\0\0,\0\0\0\0\5\0\5\0\0\5\x80\0", 28);
    EXPECT_TRUE(hasUsableHeader(bytes, 1000));
    EXPECT_FALSE(decode(bytes, 1000));
}

TEST(PasteboardImage, aCopiedPictureMayHaveAsManyPixelsAsAPictureInAFileAndNotOneMore) {
    const qint64 allowed = SelectionLimits{}.imagePixels;
    EXPECT_EQ(allowed, TurboImageCoder::maxPixels);
    EXPECT_TRUE(hasUsableHeader(pngThatSays(128'000, 1000), allowed));
    EXPECT_FALSE(hasUsableHeader(pngThatSays(128'001, 1000), allowed));
}

TEST(PasteboardImage, aHeaderThatAnnouncesAllMemoryIsRefused) {
    const QByteArray bomb = pngThatSays(30000, 30000);
    EXPECT_FALSE(hasUsableHeader(bomb, qint64{128} << 20));
    EXPECT_FALSE(decode(bomb, qint64{128} << 20));
}

TEST(PasteboardImage, aPictureWithoutSizeIsNone) {
    EXPECT_FALSE(decode(pngThatSays(0, 0), 1000));
    EXPECT_FALSE(decode(pngThatSays(10, 0), 1000));
    EXPECT_FALSE(hasUsableHeader(pngThatSays(0, 0), 1000));
}

TEST(PasteboardImage, aTruncatedPngIsNoticedAndIsNone) {
    const QByteArray whole = encoded("png", picture(100, 100));
    EXPECT_TRUE(seemsWhole(whole));
    EXPECT_TRUE(seemsWhole(whole + QByteArray(10, '\0'))) << "some programs add a little";
    EXPECT_FALSE(seemsWhole(whole.first(whole.size() / 2)));
    EXPECT_FALSE(decode(whole.first(whole.size() / 2), 100000));
}

TEST(PasteboardImage, aPictureThatLiesOnItsSideIsTurnedUpright) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setTransformation(QImageIOHandler::TransformationRotate90);
    ASSERT_TRUE(writer.write(picture(20, 10)));
    ASSERT_TRUE(decode(bytes, 1000));
    EXPECT_EQ(decode(bytes, 1000)->size(), QSize(10, 20));
}

TEST(PasteboardImage, theFirstPictureAmongTheFilesIsFound) {
    const QTemporaryDir folder;
    const auto put = [&](const char *name, const QByteArray &content) {
        const QByteArray path = folder.filePath(QLatin1String(name)).toLocal8Bit();
        QFile file(QString::fromLocal8Bit(path));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return path;
    };
    const QByteArray text = put("text.png", "no picture at all, whatever its name says");
    const QByteArray empty = put("empty.png", {});
    const QByteArray image = put("image.txt", encoded("png"));
    const QByteArray other = put("other.png", encoded("bmp"));
    const QByteArray pipe = folder.filePath(QStringLiteral("pipe")).toLocal8Bit();
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);

    const QList<QByteArray> paths{
        folder.path().toLocal8Bit(), "/nowhere", pipe, "/dev/zero", text, empty, image, other};
    EXPECT_EQ(firstImageFile(paths, 100000), encoded("png"));
    EXPECT_EQ(firstImageFile({text, empty, pipe}, 100000), std::nullopt);
}

TEST(PasteboardImage, aFileAsLargeAsAllowedIsReadAndOneByteMoreIsNot) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("image.png"));
    QFile file(path);
    const QByteArray bytes = encoded("png");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();
    EXPECT_EQ(firstImageFile({path.toLocal8Bit()}, bytes.size()), bytes);
    EXPECT_EQ(firstImageFile({path.toLocal8Bit()}, bytes.size() - 1), std::nullopt);
}

TEST(PasteboardImage, encodingKeepsEveryPixelAndNothingGivesNothing) {
    EXPECT_EQ(decode(encode(picture(), "png"), 1000)->convertToFormat(QImage::Format_RGB32), picture());
    EXPECT_TRUE(encode(QImage(), "png").isEmpty());
}

} // namespace
} // namespace tavrine::pasteboardImage
