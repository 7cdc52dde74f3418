#include "capture/editor/AnnotationRenderer.h"

#include "CanvasFixture.h"

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>

#include <cmath>
#include <limits>
#include <numbers>

namespace tavrine {
namespace {

constexpr QSize canvasSize{300, 200};

QImage painted(const DrawingPath &path, bool isFlipped = false) {
    QImage image(canvasSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    if (isFlipped) {
        painter.translate(0, canvasSize.height());
        painter.scale(1, -1);
    }
    renderDrawing(painter, path, path.points, isFlipped);
    return image;
}

// What is coloured, in whole pixels.
QRect inkOf(const QImage &image) {
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > 0)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

bool isInked(const QImage &image, const QPointF &at) {
    return qAlpha(image.pixel(at.toPoint())) > 200;
}

constexpr double spread = std::numbers::pi / 7;

TEST(AnnotationRenderer, whatHasNoPointsOrTooFewDrawsNothing) {
    for (const DrawingKind kind : {DrawingKind::path, DrawingKind::arrow, DrawingKind::rectangle, DrawingKind::oval,
                                   DrawingKind::text, DrawingKind::number}) {
        EXPECT_TRUE(inkOf(painted(drawing(kind, {}))).isNull());
        EXPECT_TRUE(drawingBounds(drawing(kind, {}), {}, false).isEmpty());
    }
    for (const DrawingKind kind : {DrawingKind::path, DrawingKind::arrow, DrawingKind::rectangle, DrawingKind::oval})
        EXPECT_TRUE(inkOf(painted(drawing(kind, {{50, 50}}))).isNull());
    EXPECT_TRUE(inkOf(painted(highlighter({{50, 50}}))).isNull());
}

TEST(AnnotationRenderer, pointsAndWidthsThatAreNoNumbersDrawNothing) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    constexpr double endless = std::numeric_limits<double>::infinity();
    for (const DrawingKind kind : {DrawingKind::path, DrawingKind::arrow, DrawingKind::rectangle, DrawingKind::oval,
                                   DrawingKind::text, DrawingKind::number}) {
        DrawingPath path = drawing(kind, {{none, 50}, {80, 80}});
        path.text = str("x");
        EXPECT_TRUE(inkOf(painted(path)).isNull());
        path.points = {{50, endless}, {80, 80}};
        EXPECT_TRUE(inkOf(painted(path)).isNull());
        path.points = {{50, 50}, {80, 80}};
        path.lineWidth = none;
        EXPECT_TRUE(inkOf(painted(path)).isNull());
        EXPECT_TRUE(drawingBounds(path, path.points, false).isEmpty());
    }
}

TEST(AnnotationRenderer, aStrokeIsAsWideAsItsLineWithRoundEnds) {
    const QImage image = painted(drawing(DrawingKind::path, {{50, 50}, {150, 50}}, Qt::red, 10));
    EXPECT_EQ(inkOf(image), QRect(45, 45, 110, 10));
    EXPECT_FALSE(isInked(image, {45, 45})); // the corner of a square end
    EXPECT_TRUE(isInked(image, {47, 50}));
}

TEST(AnnotationRenderer, aStrokeGoesStraightFromPointToPointWithRoundJoins) {
    const QImage image = painted(drawing(DrawingKind::path, {{50, 150}, {150, 50}, {250, 150}}, Qt::red, 10));
    EXPECT_TRUE(isInked(image, {100, 100}));
    EXPECT_TRUE(isInked(image, {150, 46}));
    EXPECT_EQ(inkOf(image).top(), 45); // a pointed join would reach up to 43
}

TEST(AnnotationRenderer, aLineWithoutLengthIsADot) {
    EXPECT_EQ(inkOf(painted(drawing(DrawingKind::path, {{50, 50}, {50, 50}}, Qt::red, 10))), QRect(45, 45, 10, 10));
}

TEST(AnnotationRenderer, anArrowOfFourPointsHasNoHeadAndOneOfFourAndATenthHas) {
    for (const double angle : {0.0, 1.0, 2.5, -2.0}) {
        const auto arrow = [angle](double length) {
            return drawing(DrawingKind::arrow,
                           {{100, 100}, {100 + length * std::cos(angle), 100 + length * std::sin(angle)}});
        };
        const auto reach = [](const QRect &ink) { return std::max(ink.width(), ink.height()); };
        EXPECT_LE(reach(inkOf(painted(arrow(3.9)))), 9) << angle;
        EXPECT_GE(reach(inkOf(painted(arrow(4.1)))), 12) << angle;
    }
    EXPECT_LE(inkOf(painted(drawing(DrawingKind::arrow, {{100, 100}, {104, 100}}))).height(), 4); // 4.0 exactly
    EXPECT_EQ(inkOf(painted(drawing(DrawingKind::arrow, {{100, 100}, {100, 100}}))).width(), 4);
}

TEST(AnnotationRenderer, anArrowsHeadIsFourTimesAsLongAsItsLineIsWideAndTwelveAtLeast) {
    for (const auto &[width, head] : {std::pair{1.0, 12.0}, std::pair{3.0, 12.0}, std::pair{3.5, 14.0},
                                      std::pair{6.0, 24.0}, std::pair{10.0, 40.0}}) {
        const QPointF end(250, 100);
        const DrawingPath path = drawing(DrawingKind::arrow, {{50, 100}, end}, Qt::red, width);
        const QImage image = painted(path);
        const QPointF across(head * std::cos(spread), head * std::sin(spread));
        const QRect ink = inkOf(image);
        EXPECT_NEAR(ink.top(), 100 - across.y() - width / 2, 1.1) << width;
        EXPECT_NEAR(ink.bottom() + 1, 100 + across.y() + width / 2, 1.1) << width;
        if (width >= 3) {
            EXPECT_TRUE(isInked(image, end - QPointF(across.x() - 1, across.y() - 0.5) - QPointF(0.5, 0.5))) << width;
            EXPECT_FALSE(isInked(image, end - QPointF(across.x(), across.y() / 2))) << width; // open, not filled
        }
    }
}

TEST(AnnotationRenderer, aRectangleIsTheSameFromWhicheverCornerItWasDragged) {
    const QImage image = painted(drawing(DrawingKind::rectangle, {{50, 40}, {250, 160}}, Qt::red, 6));
    EXPECT_EQ(painted(drawing(DrawingKind::rectangle, {{250, 160}, {50, 40}}, Qt::red, 6)), image);
    EXPECT_EQ(painted(drawing(DrawingKind::rectangle, {{50, 160}, {250, 40}}, Qt::red, 6)), image);
    EXPECT_EQ(painted(drawing(DrawingKind::rectangle, {{250, 40}, {50, 160}}, Qt::red, 6)), image);
    EXPECT_EQ(inkOf(image), QRect(47, 37, 206, 126));
    EXPECT_FALSE(isInked(image, {150, 100})); // not filled
    EXPECT_FALSE(isInked(image, {47, 37}));   // round joins
}

TEST(AnnotationRenderer, anOvalTouchesTheMiddlesOfTheRectanglesEdgesAndIsNotFilled) {
    const QImage image = painted(drawing(DrawingKind::oval, {{250, 160}, {50, 40}}, Qt::red, 6));
    EXPECT_EQ(inkOf(image), QRect(47, 37, 206, 126));
    EXPECT_TRUE(isInked(image, {150, 40}));
    EXPECT_TRUE(isInked(image, {50, 100}));
    EXPECT_FALSE(isInked(image, {150, 100}));
    EXPECT_FALSE(isInked(image, {52, 42}));
}

TEST(AnnotationRenderer, lettersAndStampsGrowBeyondThreeAndAHalfAndBeyondSeven) {
    for (const auto &[width, text, diameter] :
         {std::tuple{0.0, 18, 26.0}, std::tuple{3.0, 18, 26.0}, std::tuple{3.5, 18, 26.0}, std::tuple{3.51, 24, 34.0},
          std::tuple{6.0, 24, 34.0}, std::tuple{7.0, 24, 34.0}, std::tuple{7.01, 32, 44.0},
          std::tuple{10.0, 32, 44.0}}) {
        EXPECT_EQ(annotationTextSize(width), text) << width;
        EXPECT_EQ(annotationFont(width).pixelSize(), text) << width;
        EXPECT_EQ(annotationFont(width).weight(), QFont::DemiBold);
        EXPECT_EQ(stampDiameter(width), diameter) << width;
    }
}

TEST(AnnotationRenderer, aStampIsAFilledCircleWithAWhiteOutlineAboutItsPoint) {
    const KnownFont font;
    for (const auto &[width, diameter, outline] :
         {std::tuple{1.0, 26.0, 1.0}, std::tuple{2.8, 26.0, 1.0}, std::tuple{3.0, 26.0, 1.05},
          std::tuple{6.0, 34.0, 2.1}, std::tuple{10.0, 44.0, 3.5}}) {
        const QImage image = painted(stamp(1, {100, 100}, width, Qt::blue));
        const QRect ink = inkOf(image);
        const double half = diameter / 2 + outline / 2;
        EXPECT_EQ(ink.left(), static_cast<int>(std::floor(100 - half))) << width;
        EXPECT_EQ(ink.right() + 1, static_cast<int>(std::ceil(100 + half))) << width;
        EXPECT_EQ(ink.top(), static_cast<int>(std::floor(100 - half))) << width;
        EXPECT_EQ(image.pixelColor(100 - int(diameter * 0.4), 100), QColor(Qt::blue)) << width;
        if (outline > 2) {
            EXPECT_EQ(image.pixelColor(100, static_cast<int>(100 - diameter / 2)), QColor(Qt::white)) << width;
        }
    }
}

TEST(AnnotationRenderer, aStampsNumberIsWhiteAndCentredAndOneWhenThereIsNone) {
    const KnownFont font;
    const QImage image = painted(stamp(8, {100, 100}, 10, Qt::black));
    QRect digits;
    for (int y = 88; y < 112; ++y) {
        for (int x = 88; x < 112; ++x) {
            if (qRed(image.pixel(x, y)) > 128)
                digits |= QRect(x, y, 1, 1);
        }
    }
    ASSERT_FALSE(digits.isNull());
    EXPECT_NEAR((digits.left() + digits.right() + 1) / 2.0, 100, 1.1);
    EXPECT_NEAR((digits.top() + digits.bottom() + 1) / 2.0, 100, 2.6); // the box is centred, with its descent
    EXPECT_NEAR(digits.height(), 0.73 * 0.48 * 44, 1.6);               // the height of this family's digits
    EXPECT_EQ(painted(stamp(std::nullopt, {100, 100})), painted(stamp(1, {100, 100})));
    EXPECT_NE(painted(stamp(2, {100, 100})), painted(stamp(1, {100, 100})));
}

TEST(AnnotationRenderer, aStampIsTheSameInBothOrientations) {
    const KnownFont font;
    const QImage upright = painted(stamp(42, {100, 60}, 6));
    const QImage flipped = painted(stamp(42, {100, 140}, 6), true);
    EXPECT_EQ(inkOf(upright), inkOf(flipped));
    int different = 0;
    for (int y = 0; y < upright.height(); ++y) {
        for (int x = 0; x < upright.width(); ++x)
            different += std::abs(qGreen(upright.pixel(x, y)) - qGreen(flipped.pixel(x, y))) > 40;
    }
    EXPECT_LT(different, 8);
}

TEST(AnnotationRenderer, textHangsDownFromItsPoint) {
    const KnownFont font;
    const QImage image = painted(written(str("Hxg"), {50, 60}, 10));
    const QRect ink = inkOf(image);
    const QSizeF extent = annotationTextExtent(str("Hxg"), 10);
    EXPECT_GE(ink.top(), 60);
    EXPECT_LE(ink.bottom() + 1, 60 + extent.height() + 0.5);
    EXPECT_GE(ink.left(), 49);
    EXPECT_LE(ink.right(), 50 + extent.width() + 1);
    EXPECT_GT(ink.height(), 20);
}

TEST(AnnotationRenderer, textIsUprightInAFlippedTargetAndItsTopStaysAtThePoint) {
    const KnownFont font;
    const QImage upright = painted(written(str("Hxg"), {50, 60}, 10));
    const QImage flipped = painted(written(str("Hxg"), {50, 140}, 10), true);
    EXPECT_EQ(inkOf(flipped), inkOf(upright));
}

TEST(AnnotationRenderer, flippedTextThatWouldReachBelowTheLowerEdgeStandsOnIt) {
    const double height = annotationTextExtent(str("Hxg"), 10).height();
    const QImage atEdge = painted(written(str("Hxg"), {50, height}, 10), true);
    EXPECT_EQ(painted(written(str("Hxg"), {50, height - 0.5}, 10), true), atEdge);
    EXPECT_EQ(painted(written(str("Hxg"), {50, 0}, 10), true), atEdge);
    EXPECT_EQ(painted(written(str("Hxg"), {50, -30}, 10), true), atEdge);
    EXPECT_NE(painted(written(str("Hxg"), {50, height + 1}, 10), true), atEdge);
}

TEST(AnnotationRenderer, textThatIsNotFlippedMayReachBeyondTheEdge) {
    const QRect ink = inkOf(painted(written(str("Hxg"), {50, -20}, 10)));
    EXPECT_EQ(ink.top(), 0);
    EXPECT_EQ(ink.bottom(), inkOf(painted(written(str("Hxg"), {50, 60}, 10))).bottom() - 80);
}

TEST(AnnotationRenderer, textOfNothingButSpaceDrawsNothingAndOtherTextKeepsItsSpace) {
    for (const char *blank : {"", "  ", "\t\n ", "\u00a0"})
        EXPECT_TRUE(inkOf(painted(written(str(blank), {50, 50}))).isNull()) << '"' << blank << '"';
    DrawingPath path = written({}, {50, 50});
    path.text = std::nullopt;
    EXPECT_TRUE(inkOf(painted(path)).isNull());
    EXPECT_GT(inkOf(painted(written(str("    x"), {50, 50}))).left(),
              inkOf(painted(written(str("x"), {50, 50}))).left() + 10);
}

TEST(AnnotationRenderer, textOfSeveralLinesGrowsDownwards) {
    const QSizeF one = annotationTextExtent(str("Hxg"), 3);
    const QSizeF two = annotationTextExtent(str("Hxg\nH"), 3);
    EXPECT_EQ(two.width(), one.width());
    EXPECT_GT(two.height(), one.height() * 1.8);
    EXPECT_GT(inkOf(painted(written(str("Hxg\nH"), {50, 50}))).bottom(),
              inkOf(painted(written(str("Hxg"), {50, 50}))).bottom() + 10);
}

TEST(AnnotationRenderer, lettersHaveNoColouredEdges) {
    QImage image(canvasSize, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    const DrawingPath path = written(str("Hamburg"), {20, 20}, 10, Qt::black);
    renderDrawing(painter, path, path.points, false);
    painter.end();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            ASSERT_TRUE(qGray(image.pixel(x, y)) == qRed(image.pixel(x, y)) &&
                        qRed(image.pixel(x, y)) == qBlue(image.pixel(x, y)));
    }
}

TEST(AnnotationRenderer, theBoundsHoldAllThatIsColoured) {
    std::vector<DrawingPath> all{
        drawing(DrawingKind::path, {{60, 60}, {200, 90}, {100, 150}}, Qt::red, 10),
        drawing(DrawingKind::arrow, {{60, 60}, {200, 150}}, Qt::red, 10),
        drawing(DrawingKind::arrow, {{100, 100}, {105, 100}}, Qt::red, 10),
        drawing(DrawingKind::rectangle, {{60, 60}, {200, 150}}, Qt::red, 10),
        drawing(DrawingKind::oval, {{200, 60}, {60, 150}}, Qt::red, 10),
        written(str("ÅÇgj—fÀ̂̂"), {60, 80}, 10),
        stamp(123456, {140, 100}, 3),
        stamp(1, {140, 100}, 10),
        highlighter({{60, 60}, {200, 150}}, 40),
    };
    for (const DrawingPath &path : all) {
        const QRect bounds = drawingBounds(path, path.points, false).toAlignedRect();
        EXPECT_TRUE(bounds.contains(inkOf(painted(path)))) << static_cast<int>(path.kind);
        EXPECT_LT(bounds.height(), 190);
    }
}

TEST(AnnotationRenderer, thePainterIsLeftAsItWas) {
    QImage image(canvasSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setPen(Qt::green);
    painter.scale(1, -1);
    const QTransform before = painter.worldTransform();
    for (const DrawingPath &path : {written(str("x"), {50, 50}), stamp(3, {50, 50}), highlighter({{1, 1}, {50, 50}})}) {
        renderDrawing(painter, path, path.points, true);
        EXPECT_EQ(painter.worldTransform(), before);
        EXPECT_EQ(painter.pen().color(), QColor(Qt::green));
        EXPECT_EQ(painter.renderHints() & QPainter::Antialiasing, 0);
    }
}

TEST(AnnotationRenderer, fractionsBecomePointsFromTheTopOrFromTheBottom) {
    const DrawingPath path = drawing(DrawingKind::path, {{0, 0}, {0.25, 0.1}, {1, 1}, {-0.5, 2}});
    EXPECT_EQ(pointsIn(path, {400, 200}), (std::vector<QPointF>{{0, 0}, {100, 20}, {400, 200}, {-200, 400}}));
    EXPECT_EQ(flippedPointsIn(path, {400, 200}), (std::vector<QPointF>{{0, 200}, {100, 180}, {400, 0}, {-200, -200}}));
}

} // namespace
} // namespace tavrine
