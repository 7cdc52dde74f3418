#include "GoldenPictures.h"

#include "CanvasFixture.h"
#include "capture/editor/AnnotationRenderer.h"

#include <QPainter>

namespace tavrine {
namespace {

constexpr QSize goldenSize{160, 100};

// Paper with black bars, so that a highlighter has something to darken and something to spare.
QImage paper() {
    QImage image(goldenSize, QImage::Format_RGB32);
    image.fill(QColor(0xF4, 0xF1, 0xEA));
    QPainter painter(&image);
    for (int x = 12; x < goldenSize.width(); x += 28)
        painter.fillRect(x, 30, 6, 40, Qt::black);
    painter.fillRect(0, 78, goldenSize.width(), 22, QColor(0x4C, 0x86, 0xC8));
    return image;
}

std::vector<std::pair<QString, std::vector<DrawingPath>>> scenes() {
    std::vector<QPointF> wave;
    for (int i = 0; i <= 40; ++i)
        wave.emplace_back(0.06 + i * 0.022, 0.5 + 0.3 * std::sin(i * 0.35));
    return {
        {str("path"), {drawing(DrawingKind::path, wave, Qt::red, 6)}},
        {str("highlighter"), {highlighter(wave, 24), highlighter({{0.1, 0.2}, {0.9, 0.9}}, 12, Qt::cyan)}},
        {str("arrow"),
         {drawing(DrawingKind::arrow, {{0.1, 0.8}, {0.5, 0.2}}, Qt::red, 3),
          drawing(DrawingKind::arrow, {{0.4, 0.85}, {0.85, 0.4}}, QColor(0, 120, 0), 10),
          drawing(DrawingKind::arrow, {{0.1, 0.2}, {0.122, 0.2}}, Qt::blue, 3)}},
        {str("rectangle"),
         {drawing(DrawingKind::rectangle, {{0.9, 0.15}, {0.1, 0.6}}, Qt::red, 6),
          drawing(DrawingKind::rectangle, {{0.2, 0.7}, {0.7, 0.9}}, Qt::white, 3)}},
        {str("oval"),
         {drawing(DrawingKind::oval, {{0.1, 0.9}, {0.6, 0.1}}, Qt::red, 6),
          drawing(DrawingKind::oval, {{0.65, 0.3}, {0.95, 0.5}}, Qt::blue, 3)}},
        {str("text"),
         {written(str("Åg 18"), {0.04, 0.02}, 3), written(str("Jy 24"), {0.5, 0.1}, 6, Qt::blue),
          written(str("Bq 32"), {0.05, 0.45}, 10, Qt::darkGreen), written(str("held"), {0.6, 0.95}, 3, Qt::yellow)}},
        {str("number"),
         {stamp(1, {0.14, 0.3}, 3), stamp(12, {0.4, 0.5}, 6, QColor(0, 120, 0)),
          stamp(108, {0.76, 0.55}, 10, Qt::blue)}},
    };
}

} // namespace

std::vector<GoldenPicture> goldenPictures() {
    const KnownFont font;
    std::vector<GoldenPicture> pictures;
    for (const auto &[name, drawings] : scenes()) {
        for (const bool isFlipped : {false, true}) {
            QImage image = paper();
            QPainter painter(&image);
            if (isFlipped) {
                painter.translate(0, goldenSize.height());
                painter.scale(1, -1);
            }
            for (const DrawingPath &path : drawings)
                renderDrawing(painter, path, isFlipped ? flippedPointsIn(path, goldenSize) : pointsIn(path, goldenSize),
                              isFlipped);
            painter.end();
            pictures.push_back({name + (isFlipped ? str("-flipped") : QString()), image});
        }
    }
    return pictures;
}

} // namespace tavrine
