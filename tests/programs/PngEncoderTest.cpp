#include "programs/screencapture/PngEncoder.h"

#include <QImage>

#include <atomic>
#include <random>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

enum class Kind { drawn, photograph, noise, mixed };

class Picture {
public:
    Picture(int width, int height, Kind kind) : m_pixels(static_cast<size_t>(width) * static_cast<size_t>(height)) {
        std::mt19937 random(3);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const auto grain = static_cast<quint32>(random() & 3);
                const auto shade = static_cast<quint32>(x * 200 / width) + grain;
                const bool isDrawn = kind == Kind::drawn || (kind == Kind::mixed && y < height / 2);
                // The highest byte says nothing and must not matter.
                m_pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)] =
                    isDrawn                    ? static_cast<quint32>(x / 40 * 0x051100 + y / 30 * 0x1f) | 0x5a000000
                    : kind == Kind::photograph ? shade << 16 | (shade / 2 + grain) << 8 | (grain * 3)
                                               : random();
            }
        view = {m_pixels.data(), width, height};
    }
    [[nodiscard]] QImage image(const QRect &area) const {
        return QImage(reinterpret_cast<const uchar *>(view.data), view.width, view.height, QImage::Format_RGB32)
            .copy(area)
            .convertToFormat(QImage::Format_RGB888);
    }

private:
    std::vector<quint32> m_pixels;

public:
    PixelsToRead view;
};

QByteArray joined(const FilePieces &pieces) {
    QByteArray file;
    for (const auto &piece : pieces)
        file.append(reinterpret_cast<const char *>(piece.data()), static_cast<qsizetype>(piece.size()));
    return file;
}

const auto never = [] { return false; };

TEST(PngEncoder, isReadBackPixelForPixelWhateverThePictureAndTheThreads) {
    for (const Kind kind : {Kind::drawn, Kind::photograph, Kind::noise, Kind::mixed})
        for (const int threads : {1, 2, 5}) {
            const Picture picture(1001, 703, kind);
            for (const QRect &area : {QRect(0, 0, 1001, 703), QRect(7, 11, 640, 480), QRect(1000, 702, 1, 1),
                                      QRect(500, 0, 1, 703), QRect(0, 400, 1001, 1)}) {
                const QByteArray file = joined(encodePng(picture.view, area, 1, threads, never));
                const QImage read = QImage::fromData(file, "PNG");
                ASSERT_EQ(read.size(), area.size());
                EXPECT_EQ(read.convertToFormat(QImage::Format_RGB888), picture.image(area));
            }
        }
}

TEST(PngEncoder, theFileTellsTheScaleByItsDotsPerMetre) {
    const Picture picture(64, 48, Kind::drawn);
    for (const auto &[scale, dots] : {std::pair(1.0, 3780), {1.25, 4724}, {2.0, 7559}}) {
        const QImage read = QImage::fromData(joined(encodePng(picture.view, picture.view.rect(), scale, 1, never)));
        EXPECT_EQ(read.dotsPerMeterX(), dots);
        EXPECT_EQ(read.dotsPerMeterY(), dots);
    }
}

TEST(PngEncoder, theFileIsTheSameHoweverManyThreadsWriteIt) {
    const Picture picture(1001, 703, Kind::mixed);
    EXPECT_EQ(joined(encodePng(picture.view, picture.view.rect(), 1, 1, never)),
              joined(encodePng(picture.view, picture.view.rect(), 1, 4, never)));
}

TEST(PngEncoder, whatProgramsDrawBecomesSmall) {
    const Picture picture(1000, 1000, Kind::drawn);
    EXPECT_LT(joined(encodePng(picture.view, picture.view.rect(), 1, 2, never)).size(), 60'000);
}

TEST(PngEncoder, whatNatureDrewBecomesHardlyLarger) {
    for (const Kind kind : {Kind::photograph, Kind::noise}) {
        const Picture picture(1000, 1000, kind);
        EXPECT_LT(joined(encodePng(picture.view, picture.view.rect(), 1, 2, never)).size(), 3'006'000);
    }
}

TEST(PngEncoder, anAreaThatIsEmptyOrOutsideGivesNothing) {
    const Picture picture(20, 20, Kind::drawn);
    for (const QRect &area : {QRect(), QRect(0, 0, 21, 20), QRect(-1, 0, 5, 5), QRect(19, 19, 1, 2)})
        EXPECT_TRUE(encodePng(picture.view, area, 1, 2, never).empty());
}

TEST(PngEncoder, givesNothingOnceItIsStopped) {
    const Picture picture(1001, 703, Kind::drawn);
    std::atomic<int> asked = 0;
    EXPECT_TRUE(encodePng(picture.view, picture.view.rect(), 1, 2, [&] { return ++asked == 3; }).empty());
}

} // namespace
} // namespace tavrine
