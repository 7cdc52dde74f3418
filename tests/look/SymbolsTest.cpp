#include "look/Symbols.h"

#include <QImage>
#include <QPainter>

#include <cmath>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

// Every symbol name that the system's views and tables use.
const char *const usedNames[] = {"antenna.radiowaves.left.and.right",
                                 "arrow.counterclockwise",
                                 "arrow.up.arrow.down",
                                 "arrow.up.right",
                                 "bookmark",
                                 "bookmark.fill",
                                 "brain",
                                 "bubble.left.and.bubble.right",
                                 "camera",
                                 "camera.viewfinder",
                                 "checkmark",
                                 "checkmark.circle.fill",
                                 "clipboard",
                                 "cup.and.saucer.fill",
                                 "doc.fill",
                                 "doc.on.clipboard",
                                 "doc.on.doc.fill",
                                 "doc.text",
                                 "envelope",
                                 "exclamationmark.triangle.fill",
                                 "eye.fill",
                                 "face.smiling",
                                 "gearshape.fill",
                                 "hammer.fill",
                                 "hand.point.up.left",
                                 "hand.raised",
                                 "headphones",
                                 "house.fill",
                                 "icloud.and.arrow.up.fill",
                                 "info.circle",
                                 "info.circle.fill",
                                 "keyboard",
                                 "keyboard.fill",
                                 "line.3.horizontal",
                                 "link",
                                 "lock.fill",
                                 "lock.shield.fill",
                                 "magnifyingglass",
                                 "menubar.arrow.up.rectangle",
                                 "moon.zzz",
                                 "network",
                                 "paintbrush.fill",
                                 "pause.fill",
                                 "pencil.tip",
                                 "photo",
                                 "photo.badge.plus",
                                 "pin.fill",
                                 "play.fill",
                                 "plus.circle.fill",
                                 "qrcode.viewfinder",
                                 "record.circle.fill",
                                 "rectangle.dashed.badge.record",
                                 "scissors",
                                 "slider.horizontal.3",
                                 "sparkles",
                                 "square.fill",
                                 "square.grid.2x2.fill",
                                 "star.fill",
                                 "text.alignleft",
                                 "text.viewfinder",
                                 "trash",
                                 "tray.2",
                                 "tray.and.arrow.down.fill",
                                 "tray.fill",
                                 "video",
                                 "video.badge.plus",
                                 "viewfinder.circle.fill",
                                 "wifi.slash",
                                 "xmark",
                                 "xmark.circle.fill"};

double covered(const QImage &image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            sum += qAlpha(image.pixel(x, y));
    }
    return sum / 255 / (image.width() * image.height());
}

QImage image(const QString &name, qreal size = 32, qreal scale = 1, const QColor &colour = Qt::black) {
    return symbolPixmap(name, size, colour, scale).toImage();
}

TEST(Symbols, everyUsedNameIsThere) {
    for (const char *name : usedNames)
        EXPECT_TRUE(hasSymbol(QString::fromLatin1(name))) << name;
}

TEST(Symbols, everyNameHasAPictureThatIsNeitherEmptyNorFull) {
    ASSERT_GE(symbolNames().size(), qsizetype(std::size(usedNames)));
    for (const QString &name : symbolNames()) {
        const double part = covered(image(name));
        EXPECT_GT(part, 0.02) << name.toStdString();
        EXPECT_LT(part, 0.85) << name.toStdString();
    }
}

TEST(Symbols, everyPictureIsBalancedAboutItsMiddle) {
    for (const QString &name : symbolNames()) {
        const QImage drawn = image(name, 64);
        double sumX = 0;
        double sumY = 0;
        double sum = 0;
        for (int i = 0; i < 64; ++i) {
            for (int j = 0; j < 64; ++j) {
                const int alpha = qAlpha(drawn.pixel(i, j));
                sum += alpha;
                sumX += alpha * i;
                sumY += alpha * j;
            }
        }
        EXPECT_NEAR(sumX / sum, 31.5, 8) << name.toStdString();
        EXPECT_NEAR(sumY / sum, 31.5, 8) << name.toStdString();
    }
}

TEST(Symbols, aFilledSymbolCoversMoreThanItsOutline) {
    for (const char *name : {"bookmark", "photo", "trash", "star", "pin", "folder", "camera", "gearshape", "clock"}) {
        const QString outline = QString::fromLatin1(name);
        EXPECT_GT(covered(image(outline + QStringLiteral(".fill"))), covered(image(outline)) * 1.2) << name;
    }
}

TEST(Symbols, aSymbolWithABadgeDiffersFromItsBase) {
    EXPECT_NE(image(QStringLiteral("photo")), image(QStringLiteral("photo.badge.plus")));
    EXPECT_NE(image(QStringLiteral("video")), image(QStringLiteral("video.badge.plus")));
}

TEST(Symbols, anUnknownNamePaintsNothing) {
    EXPECT_FALSE(hasSymbol(QStringLiteral("no.such.symbol")));
    EXPECT_FALSE(hasSymbol(QString()));
    EXPECT_FALSE(hasSymbol(QStringLiteral("trash ")));
    EXPECT_TRUE(symbolPixmap(QStringLiteral("no.such.symbol"), 16, Qt::black, 1).isNull());
    QImage ground(32, 32, QImage::Format_ARGB32_Premultiplied);
    ground.fill(Qt::transparent);
    QPainter painter(&ground);
    paintSymbol(painter, ground.rect(), QStringLiteral("no.such.symbol"), 16, Qt::black);
    painter.end();
    EXPECT_EQ(covered(ground), 0);
}

TEST(Symbols, takeTheColourTheyAreGiven) {
    const QImage drawn = image(QStringLiteral("square.fill"), 32, 1, QColor(200, 30, 60));
    EXPECT_EQ(drawn.pixelColor(16, 16), QColor(200, 30, 60));
}

class SymbolScale : public testing::TestWithParam<double> {};

TEST_P(SymbolScale, hasAPixelForEachPixelOfTheScreen) {
    const QPixmap drawn = symbolPixmap(QStringLiteral("trash"), 16, Qt::black, GetParam());
    EXPECT_EQ(drawn.width(), int(std::lround(16 * GetParam())));
    EXPECT_DOUBLE_EQ(drawn.devicePixelRatio(), GetParam());
}

// The bar of a minus sign is 16 of 256 units times the weight: painted between the grid's lines it would be grey.
TEST_P(SymbolScale, isPaintedOnWholePixels) {
    const int side = int(std::lround(40 * GetParam()));
    QImage ground(side, side, QImage::Format_ARGB32_Premultiplied);
    ground.setDevicePixelRatio(GetParam());
    ground.fill(Qt::transparent);
    QPainter painter(&ground);
    paintSymbol(painter, QRectF(3.3, 4.7, 30, 30), QStringLiteral("gearshape"), 16, Qt::black);
    painter.end();
    // Painted without resampling: the same pixels stand somewhere in the ground.
    const QImage alone = image(QStringLiteral("gearshape"), 16, GetParam());
    bool isFound = false;
    for (int y = 0; y + alone.height() <= side && !isFound; ++y) {
        for (int x = 0; x + alone.width() <= side && !isFound; ++x) {
            QImage part = ground.copy(x, y, alone.width(), alone.height());
            part.setDevicePixelRatio(alone.devicePixelRatio());
            isFound = part == alone.convertToFormat(part.format());
        }
    }
    EXPECT_TRUE(isFound);
}

INSTANTIATE_TEST_SUITE_P(EveryScale, SymbolScale, testing::Values(1.0, 1.25, 1.5, 2.0));

TEST(Symbols, strokesAreFullPixelsAtTheSizeOfRows) {
    // The clipboard's sides are straight strokes one pixel wide at 16 points: some column must be fully dark.
    const QImage drawn = image(QStringLiteral("clipboard"), 16);
    int darkest = 0;
    for (int x = 0; x < 16; ++x)
        darkest = std::max(darkest, qAlpha(drawn.pixel(x, 9)));
    EXPECT_GE(darkest, 250);
}

// Their straight strokes lie on other lines of the icons' grid than most, in one direction or in both.
TEST(Symbols, theBinTheBookmarkAndTheCropHaveFullPixelsInBothDirections) {
    for (const char *name : {"trash", "bookmark", "crop", "clipboard", "rectangle", "photo"}) {
        const QImage drawn = image(QString::fromLatin1(name), 16);
        int fullColumns = 0;
        int fullRows = 0;
        for (int i = 0; i < 16; ++i) {
            int inColumn = 0;
            int inRow = 0;
            for (int j = 0; j < 16; ++j) {
                inColumn += qAlpha(drawn.pixel(i, j)) >= 250;
                inRow += qAlpha(drawn.pixel(j, i)) >= 250;
            }
            fullColumns += inColumn >= 5;
            fullRows += inRow >= 5;
        }
        EXPECT_GE(fullColumns, 2) << name << ": the two sides";
        EXPECT_GE(fullRows, 1) << name << ": a bar across";
    }
}

TEST(Symbols, keepAtMostAMegabyteOfPictures) {
    for (int size = 8; size < 200; ++size) {
        EXPECT_FALSE(symbolPixmap(QStringLiteral("trash"), size, QColor(size, 0, 0), 1).isNull());
        EXPECT_LE(symbolCacheUse(), symbolCacheBytes);
    }
    EXPECT_GT(symbolCacheUse(), 0);
}

TEST(Symbols, aPictureLargerThanTheCacheIsPaintedAllTheSame) {
    EXPECT_EQ(symbolPixmap(QStringLiteral("trash"), 600, Qt::black, 1).width(), 600);
    EXPECT_LE(symbolCacheUse(), symbolCacheBytes);
}

} // namespace
} // namespace tavrine::look
