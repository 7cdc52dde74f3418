#include "capture/editor/AnnotationLayer.h"

#include "CanvasFixture.h"
#include "capture/editor/AnnotationRenderer.h"

#include <QPainter>

#include <random>

namespace tavrine {
namespace {

class AnnotationLayerTest : public testing::Test {
protected:
    AnnotationLayerTest() {
        picture = QImage(480, 320, QImage::Format_RGB32);
        QPainter painter(&picture);
        QLinearGradient colours(0, 0, 480, 320);
        colours.setColorAt(0, QColor(250, 240, 200));
        colours.setColorAt(0.5, QColor(90, 140, 220));
        colours.setColorAt(1, Qt::white);
        painter.fillRect(picture.rect(), colours);
        painter.drawText(60, 60, str("what lies below"));
    }

    double part() { return std::uniform_real_distribution<double>(-0.05, 1.05)(numbers); }
    QPointF somewhere() { return {part(), part()}; }
    DrawingPath anything() {
        const double widths[] = {3, 6, 10};
        const double width = widths[numbers() % 3];
        const QColor color = QColor::fromHsv(static_cast<int>(numbers() % 360), 220, 230);
        switch (numbers() % 8) {
        case 0:
        case 1: {
            std::vector<QPointF> way;
            QPointF at = somewhere();
            for (int i = 0; i < 20; ++i)
                way.push_back(at += (somewhere() - QPointF(0.5, 0.5)) * 0.12);
            return drawing(DrawingKind::path, way, color, width);
        }
        case 2:
        case 3:
            return highlighter({somewhere(), somewhere(), somewhere()}, width * 4, color);
        case 4:
            return drawing(DrawingKind::arrow, {somewhere(), somewhere()}, color, width);
        case 5:
            return drawing(numbers() % 2 ? DrawingKind::oval : DrawingKind::rectangle, {somewhere(), somewhere()},
                           color, width);
        case 6:
            return written(str("Text Åg"), somewhere(), width, color);
        default:
            return stamp(static_cast<int>(numbers() % 200), somewhere(), width, color);
        }
    }
    // The same without the layer: the picture, and all annotations on it.
    QImage plainly(const std::vector<DrawingPath> &drawings) const {
        QImage image = picture;
        QPainter painter(&image);
        painter.scale(scale, scale);
        for (const DrawingPath &path : drawings)
            renderDrawing(painter, path, pointsIn(path, QSizeF(picture.size()) / scale), false);
        return image;
    }
    static bool isSameOutside(const QImage &a, QImage b, const QRegion &region) {
        QPainter painter(&b);
        for (const QRect &rect : region)
            painter.drawImage(rect, a, rect);
        painter.end();
        return a == b;
    }
    void start(double dots = 1) {
        scale = dots;
        layer.setGround(picture, {QSizeF(picture.size()) / dots, picture.rect(), dots});
    }

    std::mt19937 numbers{11};
    QImage picture;
    double scale = 1;
    AnnotationLayer layer;
};

TEST_F(AnnotationLayerTest, hasThePixelsOfAPicturePaintedFromNothingAfterEveryKindOfChange) {
    for (const double dots : {1.0, 2.0, 1.5}) {
        start(dots);
        std::vector<DrawingPath> drawings;
        QImage before = picture;
        for (int round = 0; round < 120; ++round) {
            switch (drawings.size() < 10 ? 0 : numbers() % 6) {
            case 0:
            case 1:
                drawings.push_back(anything());
                break;
            case 2: // as the eraser takes several
                std::erase_if(drawings, [this](const DrawingPath &) { return numbers() % 12 == 0; });
                break;
            case 3: // as an undo
                drawings.pop_back();
                break;
            case 4: { // as typing does
                DrawingPath &path = drawings[numbers() % drawings.size()];
                path.text = path.text.value_or(QString()) + str("g");
                break;
            }
            default: { // as nothing does yet
                DrawingPath &path = drawings[numbers() % drawings.size()];
                path.color = Qt::darkGreen;
                path.points = {somewhere(), somewhere()};
                break;
            }
            }
            const QRegion changed = layer.show(drawings);
            ASSERT_EQ(layer.image(), plainly(drawings)) << dots << " round " << round;
            if (round > 0) { // what is told to have changed holds all that did
                ASSERT_TRUE(isSameOutside(before, layer.image(), changed)) << dots << " round " << round;
            }
            before = layer.image();
        }
    }
}

TEST_F(AnnotationLayerTest, aListInAnotherOrderIsPaintedInThatOrder) {
    start();
    std::vector<DrawingPath> drawings{anything(), anything(), anything(), anything(), anything()};
    layer.show(drawings);
    std::swap(drawings[0], drawings[4]);
    std::swap(drawings[1], drawings[2]);
    layer.show(drawings);
    EXPECT_EQ(layer.image(), plainly(drawings));
}

TEST_F(AnnotationLayerTest, theSameListChangesNothing) {
    start();
    const std::vector<DrawingPath> drawings{anything(), anything()};
    EXPECT_EQ(layer.show(drawings), QRegion(picture.rect())); // the first time
    EXPECT_TRUE(layer.show(drawings).isEmpty());
}

TEST_F(AnnotationLayerTest, onlyTheSurroundingsOfWhatIsNewAreTold) {
    start();
    std::vector<DrawingPath> drawings{stamp(1, {0.1, 0.1})};
    layer.show(drawings);
    drawings.push_back(stamp(2, {0.9, 0.9}));
    const QRect changed = layer.show(drawings).boundingRect();
    EXPECT_TRUE(changed.contains(QPoint(432, 288)));
    EXPECT_LT(changed.width(), 60);
}

TEST_F(AnnotationLayerTest, aPartOfTheCanvasHasThePixelsOfTheWhole) {
    for (const double dots : {1.0, 2.0}) {
        scale = dots;
        const QRect part(130, 70, 200, 120);
        AnnotationLayer some;
        some.setGround(picture.copy(part), {QSizeF(picture.size()) / dots, part, dots});
        std::vector<DrawingPath> drawings;
        for (int round = 0; round < 40; ++round) {
            drawings.push_back(anything());
            if (round % 7 == 6)
                drawings.erase(drawings.begin() + 2);
            const QRegion changed = some.show(drawings);
            ASSERT_EQ(some.image(), plainly(drawings).copy(part)) << dots << " round " << round;
            ASSERT_TRUE(QRegion(part).contains(changed.boundingRect()) || changed.isEmpty());
        }
    }
}

TEST_F(AnnotationLayerTest, onAClearGroundTheAnnotationsAloneShowAndWithoutAnAreaThereIsNoImage) {
    QImage clear(100, 100, QImage::Format_ARGB32_Premultiplied);
    clear.fill(Qt::transparent);
    layer.setGround(clear, {{100, 100}, clear.rect(), 1});
    layer.show({stamp(1, {0.5, 0.5})});
    EXPECT_EQ(layer.image().pixelColor(5, 5).alpha(), 0);
    EXPECT_EQ(layer.image().pixelColor(50, 40).alpha(), 255);
    layer.setGround({}, {{0, 100}, {}, 1});
    EXPECT_TRUE(layer.show({stamp(1, {0.5, 0.5})}).isEmpty());
    EXPECT_TRUE(layer.image().isNull());
}

TEST_F(AnnotationLayerTest, pointsFarOutsideCostNothingAndHarmNothing) {
    start();
    const std::vector<DrawingPath> drawings{drawing(DrawingKind::path, {{-3000, 0.5}, {3000, 0.5}}, Qt::red, 10),
                                            drawing(DrawingKind::rectangle, {{5e8, 5e8}, {6e8, 6e8}}),
                                            stamp(1, {1e9, 0.5}), highlighter({{-1e7, 0.2}, {1e7, 0.3}})};
    layer.show(drawings);
    EXPECT_EQ(layer.image().pixelColor(240, 160), QColor(Qt::red));
}

} // namespace
} // namespace tavrine
