#include "GoldenPictures.h"

#include <QFontInfo>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

// Versions of the font and of its rasteriser move edges by a shade. A pixel is off when a channel differs by more than
// `shade`, and a picture when more than this part of its pixels is: a line of the wrong width, a letter in the wrong
// place and a head that is missing are all far more.
constexpr int shade = 48;
constexpr double partOfPixels = 0.01;

double partThatDiffers(const QImage &a, const QImage &b) {
    int off = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb one = a.pixel(x, y);
            const QRgb other = b.pixel(x, y);
            off += std::abs(qRed(one) - qRed(other)) > shade || std::abs(qGreen(one) - qGreen(other)) > shade ||
                   std::abs(qBlue(one) - qBlue(other)) > shade;
        }
    }
    return off / (double(a.width()) * a.height());
}

QImage golden(const QString &name) {
    return QImage(QStringLiteral(TAVRINE_GOLDEN "/%1.png").arg(name));
}

TEST(GoldenPictures, theFamilyOfTheLettersIsInstalled) {
    EXPECT_EQ(QFontInfo(QFont(QStringLiteral("DejaVu Sans"))).family(), QStringLiteral("DejaVu Sans"));
}

TEST(GoldenPictures, everyKindLooksAsItDidInBothOrientations) {
    const std::vector<GoldenPicture> pictures = goldenPictures();
    ASSERT_EQ(pictures.size(), 14U);
    for (const GoldenPicture &picture : pictures) {
        const QImage expected = golden(picture.name);
        ASSERT_EQ(expected.size(), picture.image.size()) << picture.name.toStdString();
        EXPECT_LE(partThatDiffers(expected, picture.image), partOfPixels) << picture.name.toStdString();
    }
}

TEST(GoldenPictures, oneKindIsNotTakenForAnother) {
    const std::vector<GoldenPicture> pictures = goldenPictures();
    for (size_t i = 0; i + 2 < pictures.size(); i += 2)
        EXPECT_GT(partThatDiffers(golden(pictures[i].name), pictures[i + 2].image), 5 * partOfPixels);
}

} // namespace
} // namespace tavrine
