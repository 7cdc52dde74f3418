// Paints the golden pictures anew, and the canvas and its tools in both appearances for people to look at.
//
// usage: canvas_pictures FOLDER
#include "CanvasFixture.h"
#include "GoldenPictures.h"
#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/VirtualTime.h"
#include "capture/editor/AnnotationThicknessPanel.h"
#include "capture/editor/DrawView.h"
#include "capture/editor/DrawingTool.h"
#include "capture/editor/ToolButton.h"
#include "look/Look.h"
#include "look/Metrics.h"

#include <QApplication>
#include <QDir>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPainter>
#include <QTest>

using namespace tavrine;

namespace {

QImage page() {
    QImage image(640, 400, QImage::Format_RGB32);
    image.fill(QColor(0xFA, 0xF8, 0xF2));
    QPainter painter(&image);
    QFont font;
    font.setPixelSize(17);
    painter.setFont(font);
    for (int line = 0; line < 13; ++line)
        painter.drawText(30, 40 + line * 28, str("The quick brown fox jumps over the lazy dog, line by line by line."));
    painter.fillRect(420, 200, 180, 150, QColor(0x2A, 0x50, 0x88));
    return image;
}

std::vector<DrawingPath> sample() {
    std::vector<QPointF> wave;
    for (int i = 0; i <= 60; ++i)
        wave.emplace_back(0.05 + i * 0.007, 0.85 + 0.06 * std::sin(i * 0.4));
    return {highlighter({{0.05, 0.16}, {0.62, 0.165}}, 24),
            highlighter({{0.3, 0.05}, {0.45, 0.4}}, 24, Qt::green),
            drawing(DrawingKind::arrow, {{0.5, 0.75}, {0.68, 0.55}}, Qt::red, 6),
            drawing(DrawingKind::rectangle, {{0.65, 0.48}, {0.95, 0.9}}, Qt::red, 3),
            drawing(DrawingKind::oval, {{0.04, 0.35}, {0.4, 0.5}}, Qt::blue, 3),
            drawing(DrawingKind::path, wave, Qt::red, 3),
            written(str("Look here"), {0.3, 0.68}, 6),
            stamp(1, {0.06, 0.3}, 3),
            stamp(12, {0.9, 0.2}, 10, Qt::blue)};
}

void paintAll(const QDir &folder, bool isDark) {
    CanvasState state;
    state.drawings = sample();
    AnnotationThickness thickness = AnnotationThickness::medium;
    QWidget window;
    window.resize(700, 520);
    auto *bar = new QWidget(&window);
    bar->setGeometry(20, 12, 400, 44);
    auto *row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(look::space::tiny);
    std::vector<ToolButton *> buttons;
    for (const DrawingToolEntry &entry : drawingTools) {
        buttons.push_back(new ToolButton(entry.tool, state.canvas().tool,
                                         {[&] { return thickness; }, [&](AnnotationThickness now) { thickness = now; }},
                                         bar));
        row->addWidget(buttons.back());
    }
    buttons.back()->setEnabled(false);
    row->addStretch();
    auto *view = new DrawView(&window);
    view->setGeometry(30, 70, 640, 400);
    view->setPicture(page());
    view->updateCanvas(state.canvas());
    window.show();
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window))
        return;
    state.tool = DrawingTool::text;
    view->updateCanvas(state.canvas());
    QTest::mouseClick(view, Qt::LeftButton, {}, {330, 300});
    QTest::keyClicks(view->activeTextField(), str("being typed"));
    QCoreApplication::processEvents();
    const QString appearance = isDark ? str("dark.png") : str("light.png");
    window.grab().save(folder.filePath(str("typing-") + appearance));
    buttons[2]->click();
    for (ToolButton *button : buttons)
        button->refresh();
    QCoreApplication::processEvents();
    QImage picture = window.grab().toImage();
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<AnnotationThicknessPanel *>(widget) && widget->isVisible())
            QPainter(&picture).drawPixmap(window.mapFromGlobal(widget->pos()), widget->grab());
    }
    picture.save(folder.filePath(str("canvas-") + appearance));
}

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    if (argc != 2)
        return 2;
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    folder.mkpath(str("golden"));
    for (const GoldenPicture &picture : goldenPictures())
        picture.image.save(folder.filePath(str("golden/") + picture.name + str(".png")));
    VirtualTime time;
    FakeAppearance appearance;
    look::Look look(time, &appearance);
    for (const bool isDark : {false, true}) {
        DesktopAppearance wish;
        wish.colorScheme = isDark ? ColorScheme::dark : ColorScheme::light;
        appearance.set(wish);
        QCoreApplication::processEvents();
        paintAll(folder, isDark);
    }
}
