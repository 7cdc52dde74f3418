// What annotations cost on a picture of 3840 by 2160 pixels: a frame while drawing over 500 of them, and the finished
// picture with 200 of them, cropped and as the bytes of a PNG.

#include "capture/PngData.h"
#include "capture/editor/AnnotationLayer.h"
#include "capture/editor/DrawView.h"
#include "capture/editor/Flattening.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

#include <cmath>
#include <random>

#include <benchmark/benchmark.h>

namespace tavrine {
namespace {

constexpr QSize pictureSize{3840, 2160};

const QImage &picture() {
    static const QImage made = [] {
        QImage image(pictureSize, QImage::Format_RGB32);
        image.fill(QColor(0xF6, 0xF4, 0xEE));
        QPainter painter(&image);
        for (int y = 40; y < pictureSize.height(); y += 26)
            painter.drawText(40, y, QStringLiteral("a line of text as a screen is full of, ").repeated(14));
        QLinearGradient sky(0, 0, 0, 900);
        sky.setColorAt(0, QColor(0x3A, 0x6E, 0xC8));
        sky.setColorAt(1, QColor(0xF6, 0xB2, 0x6B));
        painter.fillRect(2400, 300, 1300, 1500, sky);
        return image;
    }();
    return made;
}

// All kinds in turn, every fourth a highlighter, as a person draws them: an eighth of the picture long.
std::vector<DrawingPath> drawings(int count) {
    std::mt19937 numbers(3);
    const auto part = [&] { return std::uniform_real_distribution<double>(0.02, 0.9)(numbers); };
    std::vector<DrawingPath> all;
    for (int i = 0; i < count; ++i) {
        DrawingPath path;
        path.id = QString::number(i);
        path.color = QColor::fromHsv(i * 37 % 360, 220, 230);
        path.lineWidth = i % 3 == 0 ? 3 : i % 3 == 1 ? 6 : 10;
        const QPointF from(part(), part());
        path.points = {from, from + QPointF(part() - 0.45, part() - 0.45) * 0.25};
        switch (i % 8) {
        case 0:
        case 4:
            path.isHighlighter = true;
            path.lineWidth *= 4;
            path.color.setAlphaF(0.4F);
            [[fallthrough]];
        case 1:
            for (int step = 0; step < 60; ++step)
                path.points.push_back(from + QPointF(step * 0.002, 0.02 * std::sin(step * 0.3)));
            break;
        case 2:
            path.kind = DrawingKind::arrow;
            break;
        case 3:
            path.kind = DrawingKind::rectangle;
            break;
        case 5:
            path.kind = DrawingKind::oval;
            break;
        case 6:
            path.kind = DrawingKind::text;
            path.text = QStringLiteral("Note number %1").arg(i);
            break;
        default:
            path.kind = DrawingKind::number;
            path.number = i;
            break;
        }
        all.push_back(path);
    }
    return all;
}

struct Desk {
    explicit Desk(DrawingTool drawingTool, const QSize &size) : tool(drawingTool), all(drawings(500)) {
        DrawingCanvas canvas;
        canvas.tool = {[this] { return tool; }, [this](DrawingTool now) { tool = now; }};
        canvas.drawings = {[this] { return all; }, [this](std::vector<DrawingPath> now) { all = std::move(now); }};
        canvas.nextStampNumber = {[] { return 1; }, [](int) {}};
        canvas.selectedColor = Qt::yellow;
        canvas.lineWidth = 10;
        view.resize(size);
        view.setPicture(picture());
        view.updateCanvas(canvas);
        view.show();
        // A window that is not exposed paints nothing.
        while (!view.windowHandle()->isExposed())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        paint();
    }
    void mouse(QEvent::Type type, const QPointF &at) {
        const bool isMove = type == QEvent::MouseMove;
        QMouseEvent event(type, at, at, isMove ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&view, &event);
    }
    // What was marked is painted and flushed, at once.
    void paint() {
        QEvent request(QEvent::UpdateRequest);
        QCoreApplication::sendEvent(&view, &request);
    }

    DrawingTool tool;
    std::vector<DrawingPath> all;
    DrawView view;
};

QSize viewSize(const benchmark::State &state) {
    return state.range(0) == 0 ? QSize(1280, 720) : pictureSize;
}

// One move of the mouse and the frame after it. Strokes are of 1 to 400 points; an arrow goes anywhere.
void frameWhileDrawing(benchmark::State &state, DrawingTool tool) {
    Desk desk(tool, viewSize(state));
    const QSizeF size = desk.view.size();
    int step = 0;
    for (auto _ : state) {
        if (step % 400 == 0) {
            state.PauseTiming();
            desk.mouse(QEvent::MouseButtonPress, {size.width() / 2, size.height() / 2});
            desk.paint();
            state.ResumeTiming();
        }
        ++step;
        desk.mouse(QEvent::MouseMove, {size.width() * (0.5 + 0.4 * std::sin(step * 0.05)),
                                       size.height() * (0.5 + 0.4 * std::cos(step * 0.031))});
        desk.paint();
        if (step % 400 == 0) {
            state.PauseTiming();
            desk.mouse(QEvent::MouseButtonRelease, {});
            desk.all.resize(500);
            desk.paint();
            state.ResumeTiming();
        }
    }
}
BENCHMARK_CAPTURE(frameWhileDrawing, pen, DrawingTool::pen)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(frameWhileDrawing, highlighter, DrawingTool::highlighter)
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(frameWhileDrawing, arrow, DrawingTool::arrow)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The end of a stroke of 400 points: it is written, and the frame after it.
void endOfAStroke(benchmark::State &state, DrawingTool tool) {
    Desk desk(tool, viewSize(state));
    const QSizeF size = desk.view.size();
    for (auto _ : state) {
        state.PauseTiming();
        desk.mouse(QEvent::MouseButtonPress, {size.width() / 2, size.height() / 2});
        for (int step = 0; step < 400; ++step)
            desk.mouse(QEvent::MouseMove, {size.width() * (0.5 + 0.2 * std::sin(step * 0.05)),
                                           size.height() * (0.5 + 0.2 * std::cos(step * 0.031))});
        desk.paint();
        state.ResumeTiming();
        desk.mouse(QEvent::MouseButtonRelease, {});
        desk.paint();
    }
}
BENCHMARK_CAPTURE(endOfAStroke, pen, DrawingTool::pen)->Arg(0)->Arg(1)->Iterations(40)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(endOfAStroke, highlighter, DrawingTool::highlighter)
    ->Arg(0)
    ->Arg(1)
    ->Iterations(40)
    ->Unit(benchmark::kMillisecond);

// A letter typed into the last of 500, or one of the middle erased: only its surroundings are painted again.
void changeOfOneInTheLayer(benchmark::State &state) {
    AnnotationLayer layer;
    layer.setGround(picture(), {pictureSize, QRect({}, pictureSize), 1});
    std::vector<DrawingPath> all = drawings(500);
    layer.show(all);
    bool isOdd = false;
    for (auto _ : state) {
        all[246].text = (isOdd = !isOdd) ? QStringLiteral("a") : QStringLiteral("ab");
        benchmark::DoNotOptimize(layer.show(all));
    }
}
BENCHMARK(changeOfOneInTheLayer)->Unit(benchmark::kMillisecond);

void firstFrame(benchmark::State &state) {
    const std::vector<DrawingPath> all = drawings(500);
    for (auto _ : state) {
        AnnotationLayer layer;
        const QSize size = viewSize(state);
        layer.setGround(picture().scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation),
                        {size, QRect({}, size), 1});
        layer.show(all);
        benchmark::DoNotOptimize(layer.image().constBits());
    }
}
BENCHMARK(firstFrame)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void flattening(benchmark::State &state) {
    const std::vector<DrawingPath> all = drawings(200);
    for (auto _ : state)
        benchmark::DoNotOptimize(flattenedImage(picture(), all).constBits());
}
BENCHMARK(flattening)->Unit(benchmark::kMillisecond);

// Strokes of a highlighter from corner to corner, the most that the blend can be asked for.
void flatteningLongHighlighters(benchmark::State &state) {
    std::vector<DrawingPath> all = drawings(20);
    for (DrawingPath &path : all) {
        path = all[0];
        path.points = {{0.02, 0.03}, {0.97, 0.95}};
        path.lineWidth = 40;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(flattenedImage(picture(), all).constBits());
}
BENCHMARK(flatteningLongHighlighters)->Unit(benchmark::kMillisecond);

void flatteningAndCropping(benchmark::State &state) {
    const std::vector<DrawingPath> all = drawings(200);
    for (auto _ : state)
        benchmark::DoNotOptimize(cropImage(flattenedImage(picture(), all), {0.05, 0.05, 0.9, 0.9}));
}
BENCHMARK(flatteningAndCropping)->Unit(benchmark::kMillisecond);

void flatteningCroppingAndPng(benchmark::State &state) {
    const std::vector<DrawingPath> all = drawings(200);
    for (auto _ : state) {
        const auto part = cropImage(flattenedImage(picture(), all), {0.05, 0.05, 0.9, 0.9});
        benchmark::DoNotOptimize(pngData(*part));
    }
}
BENCHMARK(flatteningCroppingAndPng)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tavrine

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
