#include "adapters/gnome/ScreenPictures.h"

#include "adapters/frozen/PictureFile.h"

#include <QBuffer>
#include <QTemporaryFile>

#include <gtest/gtest.h>

using namespace tavrine;

namespace {

/// No pixel is like its neighbours.
QImage pattern(QSize size, int seed) {
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb((x * 7 + seed) & 0xff, (y * 5) & 0xff, (x + y) & 0xff));
    return image;
}

QImage copyOf(const PictureCut &cut) {
    QImage image(cut.area.size(), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, cut.picture.at(cut.area.topLeft() + QPoint(x, y)) | 0xff000000U);
    return image;
}

class ScreenPictures : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(file.open()); }
    [[nodiscard]] bool write(const std::vector<ScreenPicture> &screens, Shrinking shrinking = Shrinking::mixed) {
        return writeScreenPictures(screens, {17, 23}, shrinking, file.handle());
    }
    [[nodiscard]] std::unique_ptr<PictureFile> read(QSize plane) {
        return PictureFile::open(file.fileName().toStdString(), plane);
    }
    /// As the shell writes them.
    std::vector<GnomePicture> pack(const std::vector<ScreenPicture> &screens) {
        std::vector<GnomePicture> told;
        for (const ScreenPicture &screen : screens) {
            QByteArray bytes;
            QBuffer buffer(&bytes);
            screen.pixels.save(&buffer, "PNG");
            file.write(bytes);
            told.push_back({screen.area, bytes.size()});
        }
        file.flush();
        return told;
    }

    QTemporaryFile file;
};

TEST_F(ScreenPictures, ofAsManyPixelsAsThePlaneHasAreThePlane) {
    const QImage first = pattern({64, 40}, 0);
    const QImage second = pattern({32, 48}, 90);
    ASSERT_TRUE(write({{QRect(0, 0, 64, 40), first}, {QRect(64, 0, 32, 48), second}}));
    const auto picture = read({96, 48});
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->pointer(), QPoint(17, 23));
    EXPECT_TRUE(picture->isOnePlane());
    const PictureCut cut = picture->cut({60, 3, 10, 20});
    EXPECT_EQ(cut.area, QRect(60, 3, 10, 20));
    EXPECT_EQ(cut.fineness, 1);
    EXPECT_EQ(copyOf(cut).copy(0, 0, 4, 20), first.copy(60, 3, 4, 20));
    EXPECT_EQ(copyOf(cut).copy(4, 0, 6, 20), second.copy(0, 3, 6, 20));
}

TEST_F(ScreenPictures, ofMorePixelsThanThePlaneAreCutPixelByPixel) {
    const QImage first = pattern({96, 60}, 0);   // 1.5
    const QImage second = pattern({80, 50}, 90); // 1.25
    ASSERT_TRUE(write({{QRect(0, 0, 64, 40), first}, {QRect(64, 0, 64, 40), second}}));
    const auto picture = read({128, 40});
    ASSERT_TRUE(picture);
    EXPECT_FALSE(picture->isOnePlane());
    const PictureCut onFirst = picture->cut({3, 5, 11, 9}); // 4.5 to 21, and 7.5 to 21
    EXPECT_EQ(onFirst.area, QRect(QPoint(5, 8), QPoint(20, 20)));
    EXPECT_EQ(onFirst.fineness, 1.5);
    EXPECT_EQ(copyOf(onFirst), first.copy(onFirst.area));
    const PictureCut onSecond = picture->cut({64 + 4, 8, 20, 30});
    EXPECT_EQ(onSecond.area, QRect(5, 10, 25, 38));
    EXPECT_EQ(onSecond.fineness, 1.25);
    EXPECT_EQ(copyOf(onSecond), second.copy(onSecond.area));
}

TEST_F(ScreenPictures, thatAreEquallyFineAreOnePlane) {
    const QImage first = pattern({96, 60}, 0);
    const QImage second = pattern({96, 60}, 90);
    ASSERT_TRUE(write({{QRect(0, 0, 64, 40), first}, {QRect(64, 0, 64, 40), second}}));
    const auto picture = read({128, 40});
    ASSERT_TRUE(picture);
    EXPECT_TRUE(picture->isOnePlane());
    const PictureCut cut = picture->cut({60, 0, 8, 40});
    EXPECT_EQ(copyOf(cut).copy(0, 0, 6, 60), first.copy(90, 0, 6, 60));
    EXPECT_EQ(copyOf(cut).copy(6, 0, 6, 60), second.copy(0, 0, 6, 60));
}

TEST_F(ScreenPictures, areasBesideEachOtherShareNoPixelAndLeaveNoneOut) {
    ASSERT_TRUE(write({{QRect(0, 0, 64, 40), pattern({80, 50}, 0)}}));
    const auto picture = read({64, 40});
    ASSERT_TRUE(picture);
    for (int x = 1; x < 63; ++x)
        EXPECT_EQ(picture->cut({0, 0, x, 40}).area.right() + 1, picture->cut({x, 0, 64 - x, 40}).area.left()) << x;
}

TEST_F(ScreenPictures, shrunkForAColourHaveNoColourThatTheScreenHasNot) {
    QImage stripes({96, 60}, QImage::Format_RGB32);
    for (int x = 0; x < 96; ++x)
        for (int y = 0; y < 60; ++y)
            stripes.setPixel(x, y, x % 2 ? 0xffffffffU : 0xff000000U);
    for (const Shrinking shrinking : {Shrinking::leftOut, Shrinking::mixed}) {
        file.resize(0);
        file.seek(0);
        ASSERT_TRUE(write({{QRect(0, 0, 64, 40), stripes}}, shrinking));
        const auto picture = read({64, 40});
        ASSERT_TRUE(picture);
        int mixed = 0;
        for (int x = 0; x < 64; ++x) {
            const quint32 pixel = picture->plane().at({x, 20});
            mixed += pixel != 0 && pixel != 0xffffffU ? 1 : 0;
        }
        EXPECT_EQ(mixed > 0, shrinking == Shrinking::mixed);
    }
}

TEST_F(ScreenPictures, areReadAsTheShellWroteThem) {
    const std::vector<ScreenPicture> screens{{QRect(0, 0, 64, 40), pattern({96, 60}, 0)},
                                             {QRect(64, 0, 64, 40), pattern({80, 50}, 90)}};
    const auto told = pack(screens);
    const auto found = readScreenPictures(file.handle(), told);
    ASSERT_EQ(found.size(), 2U);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(found[i].area, screens[i].area);
        EXPECT_EQ(found[i].pixels, screens[i].pixels);
    }
}

TEST_F(ScreenPictures, thatAreNoneOfTheirScreensAreNotRead) {
    const auto told = pack({{QRect(0, 0, 64, 40), pattern({96, 60}, 0)}});
    const auto isRead = [this, &told](const QRect &area, qint64 more = 0) {
        return !readScreenPictures(file.handle(), {{area, told[0].length + more}}).empty();
    };
    EXPECT_TRUE(isRead({0, 0, 64, 40}));
    EXPECT_FALSE(isRead({0, 0, 64, 20}));       // another shape
    EXPECT_FALSE(isRead({0, 0, 192, 120}));     // fewer pixels than the plane
    EXPECT_FALSE(isRead({0, 0, 4, 3}));         // too many
    EXPECT_FALSE(isRead({-1, 0, 64, 40}));      // off the plane
    EXPECT_FALSE(isRead({32'760, 0, 64, 40}));  // beyond what a server has
    EXPECT_FALSE(isRead({0, 0, 64, 40}, 1));    // longer than what is there
    EXPECT_FALSE(isRead({0, 0, 64, 40}, -600)); // cut short
    EXPECT_FALSE(isRead({0, 0, 0, 0}));
    EXPECT_TRUE(readScreenPictures(file.handle(), {}).empty());
}

TEST_F(ScreenPictures, inAFileThatIsCutShortOrOfAnotherPlaneAreNotShown) {
    ASSERT_TRUE(write({{QRect(0, 0, 64, 40), pattern({96, 60}, 0)}}));
    ASSERT_TRUE(read({64, 40}));
    EXPECT_FALSE(read({64, 41}));
    const qint64 whole = file.size();
    for (const qint64 length : {whole - 1, whole - 96 * 60 * 4 - 1, qint64{40}, qint64{20}, qint64{0}}) {
        ASSERT_TRUE(file.resize(length));
        EXPECT_FALSE(read({64, 40})) << length;
    }
}

TEST_F(ScreenPictures, ofPartsThatLieBesideThePlaneAreNotShown) {
    for (const PictureFilePart part :
         {PictureFilePart{-1, 0, 8, 8, 12, 12}, PictureFilePart{1, 0, 8, 8, 12, 12}, PictureFilePart{0, 0, 8, 8, 0, 12},
          PictureFilePart{0, 0, 8, 8, 12, 40'000}, PictureFilePart{0, 0, 2'147'483'647, 8, 12, 12}}) {
        PictureFileHead head;
        head.width = head.height = 8;
        head.parts = 1;
        ASSERT_TRUE(file.resize(0) && file.seek(0));
        file.write(reinterpret_cast<const char *>(&head), sizeof head);
        file.write(reinterpret_cast<const char *>(&part), sizeof part);
        file.write(QByteArray(4 * (64 + 144), 'x'));
        file.flush();
        EXPECT_FALSE(read({8, 8})) << part.x << " " << part.pixelWidth;
    }
}

} // namespace
