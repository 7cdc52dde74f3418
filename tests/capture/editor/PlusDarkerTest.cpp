#include "capture/editor/PlusDarker.h"

#include "CanvasFixture.h"
#include "capture/editor/AnnotationRenderer.h"

#include <QImage>
#include <QPainter>
#include <QPicture>
#include <QPixmap>

#include <algorithm>
#include <random>

namespace tavrine {
namespace {

QImage plain(const QColor &color, QImage::Format format = QImage::Format_ARGB32_Premultiplied,
             const QSize &size = {100, 60}) {
    QImage image(size, format);
    image.fill(color);
    return image;
}

void drawOn(QPaintDevice *device, const DrawingPath &path) {
    QPainter painter(device);
    renderDrawing(painter, path, path.points, false);
}

TEST(PlusDarker, followsItsFormulaForEveryChannel) {
    std::mt19937 numbers(7);
    const auto below = [&](int limit) { return std::uniform_int_distribution<int>(0, limit)(numbers); };
    for (int round = 0; round < 20000; ++round) {
        const int da = below(255), sa = below(255);
        const int d[3] = {below(da), below(da), below(da)};
        const int s[3] = {below(sa), below(sa), below(sa)};
        auto pixel = static_cast<std::uint32_t>(da << 24 | d[0] << 16 | d[1] << 8 | d[2]);
        const auto layer = static_cast<std::uint32_t>(sa << 24 | s[0] << 16 | s[1] << 8 | s[2]);
        plusDarker(&pixel, &layer, 1);
        const int alpha = std::min(255, da + sa);
        ASSERT_EQ(static_cast<int>(pixel >> 24), alpha);
        for (int i = 0; i < 3; ++i) {
            const int expected = std::max(0, alpha - ((da - d[i]) + (sa - s[i])));
            ASSERT_EQ(static_cast<int>(pixel >> (16 - 8 * i) & 255), expected);
        }
    }
}

TEST(PlusDarker, yellowOverWhiteTakesFourTenthsOfTheBlueAndBlackStaysBlack) {
    QImage image = plain(Qt::white);
    QPainter(&image).fillRect(20, 0, 20, 60, Qt::black);
    drawOn(&image, highlighter({{0, 30}, {100, 30}}, 40));
    EXPECT_EQ(image.pixel(70, 30), qRgb(255, 255, 153));
    EXPECT_EQ(image.pixel(30, 30), qRgb(0, 0, 0));
    EXPECT_EQ(image.pixel(70, 5), qRgb(255, 255, 255));
}

TEST(PlusDarker, twoStrokesDarkenEachOtherAndOneDoesNotDarkenItself) {
    QImage image = plain(Qt::white);
    drawOn(&image, highlighter({{10, 30}, {90, 30}, {10, 30}, {50, 10}, {50, 50}}, 12));
    EXPECT_EQ(image.pixel(50, 30), qRgb(255, 255, 153));
    drawOn(&image, highlighter({{50, 0}, {50, 60}}, 12));
    EXPECT_EQ(image.pixel(50, 30), qRgb(255, 255, 51));
}

TEST(PlusDarker, overNothingTheStrokeIsAsItIs) {
    QImage image = plain(Qt::transparent);
    drawOn(&image, highlighter({{0, 30}, {100, 30}}, 40));
    EXPECT_EQ(image.constScanLine(30)[50 * 4 + 3], 102);
    EXPECT_EQ(image.constScanLine(30)[50 * 4 + 2], 102); // premultiplied red
    EXPECT_EQ(image.constScanLine(30)[50 * 4], 0);
}

TEST(PlusDarker, givesTheSameOnEveryRasterSurface) {
    const DrawingPath path = highlighter({{5, 10}, {90, 50}}, 14);
    QImage expected = plain(QColor(200, 180, 240));
    drawOn(&expected, path);
    for (const QImage::Format format :
         {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGB888, QImage::Format_RGBA8888_Premultiplied}) {
        QImage image = plain(QColor(200, 180, 240), format);
        drawOn(&image, path);
        EXPECT_EQ(image.convertToFormat(QImage::Format_ARGB32_Premultiplied), expected) << format;
    }
    QPixmap pixmap(100, 60);
    pixmap.fill(QColor(200, 180, 240));
    drawOn(&pixmap, path);
    EXPECT_EQ(pixmap.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied), expected);
}

TEST(PlusDarker, isTheSameInOnePieceAndInTilesAndUnderAClip) {
    const QSize large(1700, 900);
    std::vector<QPointF> way;
    for (int i = 0; i < 60; ++i)
        way.emplace_back(20 + i * 28.3, 450 + 400 * std::sin(i * 0.7));
    const DrawingPath path = highlighter(way, 40);
    QImage whole = plain(QColor(220, 230, 210), QImage::Format_RGB32, large);
    drawOn(&whole, path);
    QImage pieces = plain(QColor(220, 230, 210), QImage::Format_RGB32, large);
    for (int y = 0; y < large.height(); y += 97) {
        for (int x = 0; x < large.width(); x += 131) {
            QPainter painter(&pieces);
            painter.setClipRect(x, y, 131, 97);
            renderDrawing(painter, path, path.points, false);
        }
    }
    EXPECT_EQ(pieces, whole);
    // And one pixel by the formula in each tile that the stroke crosses.
    int darkened = 0;
    for (int x = 0; x < large.width(); ++x)
        darkened += whole.pixel(x, 450) == qRgb(220, 230, 108);
    EXPECT_GT(darkened, 500);
}

TEST(PlusDarker, aDotIsADotWhereverTheTilesMeet) {
    QImage image = plain(Qt::white, QImage::Format_RGB32, {600, 200});
    drawOn(&image, highlighter({{256, 64}, {256, 64}}, 40));
    EXPECT_EQ(image.pixel(250, 60), qRgb(255, 255, 153));
    EXPECT_EQ(image.pixel(265, 75), qRgb(255, 255, 153));
    EXPECT_EQ(image.pixel(280, 64), qRgb(255, 255, 255));
}

TEST(PlusDarker, keepsThePaintersTransformationClipAndState) {
    QImage image = plain(Qt::white);
    image.setDevicePixelRatio(2); // 50 by 30 points
    QPainter painter(&image);
    painter.translate(10, 0);
    painter.setClipRect(QRectF(0, 0, 10, 30));
    const QTransform before = painter.worldTransform();
    const DrawingPath path = highlighter({{0, 15}, {40, 15}}, 10);
    renderDrawing(painter, path, path.points, false);
    EXPECT_EQ(painter.worldTransform(), before);
    EXPECT_EQ(painter.compositionMode(), QPainter::CompositionMode_SourceOver);
    painter.end();
    EXPECT_EQ(image.pixel(30, 30), qRgb(255, 255, 153)); // at (5, 15) of the moved points
    EXPECT_EQ(image.pixel(30, 22), qRgb(255, 255, 153));
    EXPECT_EQ(image.pixel(30, 18), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(50, 30), qRgb(255, 255, 255)); // beyond the clip
}

TEST(PlusDarker, onASurfaceThatCannotBeReadTheStrokeIsLaidOver) {
    QPicture picture;
    drawOn(&picture, highlighter({{0, 30}, {100, 30}}, 40));
    QImage image = plain(Qt::white);
    QPainter(&image).drawPicture(0, 0, picture);
    EXPECT_EQ(image.pixel(50, 30), qRgb(255, 255, 153)); // over white the two blends are one
}

} // namespace
} // namespace tavrine
