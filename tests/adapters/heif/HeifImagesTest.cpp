#include "adapters/linux/TurboImageCoder.h"

#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>

#include <random>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

/// A picture of 48 by 32, red at the left and blue at the right, as the heads and the boxes of a phone's are.
QByteArray smallHeic() {
    QFile file(QStringLiteral(SMALL_HEIC));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

class HeifImages : public testing::Test {
protected:
    QString write(const char *name, const QByteArray &data) {
        const QString path = folder.filePath(QLatin1String(name));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(data), data.size());
        return path;
    }
    static bool isLoaded() {
        QFile maps(QStringLiteral("/proc/self/maps"));
        EXPECT_TRUE(maps.open(QIODevice::ReadOnly));
        return maps.readAll().contains("libheif");
    }
    /// The box that tells the size of the picture, made to tell another.
    static QByteArray withSize(quint32 width, quint32 height) {
        QByteArray data = smallHeic();
        for (qsizetype at = data.indexOf("ispe"); at >= 0; at = data.indexOf("ispe", at + 1)) {
            for (int i = 0; i < 4; ++i) {
                data[at + 8 + i] = static_cast<char>(width >> (24 - 8 * i));
                data[at + 12 + i] = static_cast<char>(height >> (24 - 8 * i));
            }
        }
        return data;
    }

    QTemporaryDir folder;
    TurboImageCoder coder;
};

// The first: what was loaded stays.
TEST_F(HeifImages, aTheLibraryIsLoadedByTheFirstSuchPictureAndByNoOther) {
    QImage png(4, 4, QImage::Format_RGB32);
    png.fill(Qt::red);
    const QString path = folder.filePath(QStringLiteral("a.png"));
    ASSERT_TRUE(png.save(path));
    EXPECT_TRUE(coder.load(path));
    EXPECT_FALSE(coder.load(write("words.txt", "no picture at all")));
    EXPECT_FALSE(isLoaded());
    EXPECT_TRUE(coder.load(write("a.heic", smallHeic())));
    EXPECT_TRUE(isLoaded());
}

TEST_F(HeifImages, aPictureIsReadWithItsSizeAndColours) {
    const std::optional<QImage> image = coder.load(write("a.heic", smallHeic()));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSize(48, 32));
    EXPECT_NEAR(image->pixelColor(8, 16).red(), 220, 12);
    EXPECT_NEAR(image->pixelColor(8, 16).blue(), 30, 12);
    EXPECT_NEAR(image->pixelColor(40, 16).red(), 20, 12);
    EXPECT_NEAR(image->pixelColor(40, 16).blue(), 210, 12);
}

TEST_F(HeifImages, theNameOfTheFileDoesNotMatter) {
    EXPECT_TRUE(coder.load(write("a.jpg", smallHeic())));
    EXPECT_TRUE(coder.load(write("a", smallHeic())));
}

TEST_F(HeifImages, aThumbnailIsScaledDown) {
    const std::optional<QImage> image = coder.thumbnail(write("a.heic", smallHeic()), 24);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSize(24, 16));
}

TEST_F(HeifImages, aFileThatEndsEarlyIsNone) {
    const QByteArray whole = smallHeic();
    for (qsizetype length = 0; length < whole.size(); length += 7) {
        const std::optional<QImage> image = coder.load(write("a.heic", whole.left(length)));
        EXPECT_TRUE(!image || image->size() == QSize(48, 32)) << length;
    }
    EXPECT_FALSE(coder.load(write("a.heic", whole.left(whole.size() / 2))));
}

TEST_F(HeifImages, aDamagedFileNeverEndsTheProgram) {
    std::minstd_rand random(11);
    for (int round = 0; round < 300; ++round) {
        QByteArray data = smallHeic();
        for (int i = 0; i < 6; ++i)
            data[qsizetype(random() % size_t(data.size()))] = static_cast<char>(random());
        static_cast<void>(coder.load(write("a.heic", data)));
    }
    EXPECT_TRUE(coder.load(write("a.heic", smallHeic())));
}

TEST_F(HeifImages, anEnormousSizeIsRefusedBeforeAnythingIsDecoded) {
    EXPECT_FALSE(coder.load(write("a.heic", withSize(16'384, 16'384))));
    EXPECT_FALSE(coder.load(write("a.heic", withSize(0xFFFFFFFF, 0xFFFFFFFF))));
    EXPECT_FALSE(coder.load(write("a.heic", withSize(0, 32))));
}

TEST_F(HeifImages, aSizeThatTheContentsDoNotHaveIsRefused) {
    EXPECT_FALSE(coder.load(write("a.heic", withSize(480, 320))));
}

} // namespace
} // namespace tavrine
