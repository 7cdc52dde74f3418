// Paints the editor and its landing page into files, for people to look at, and tells how long they take.
//
// usage: editor_pictures FOLDER
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/SerialQueue.h"
#include "base/Uuid.h"
#include "capture/editor/ColorPopoverView.h"
#include "capture/editor/DrawView.h"
#include "capture/editor/TavrineEditorContainerView.h"
#include "look/Look.h"
#include "upload/PlayedUpload.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <QTest>

#include <cmath>
#include <cstdio>

using namespace tavrine;
using namespace std::chrono_literals;

namespace {

QImage photograph(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, height);
    sky.setColorAt(0, QColor(0x3A, 0x6E, 0xC8));
    sky.setColorAt(1, QColor(0xF6, 0xB2, 0x6B));
    painter.fillRect(image.rect(), sky);
    painter.scale(width / 480.0, height / 320.0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x24, 0x36, 0x2C));
    painter.drawPolygon(QPolygon({{0, 320}, {140, 150}, {240, 260}, {340, 120}, {480, 320}}));
    painter.setPen(Qt::white);
    painter.drawText(30, 60, QStringLiteral("The quick brown fox jumps over the lazy dog"));
    return image;
}

DrawingPath annotation(DrawingKind kind, std::vector<QPointF> points, const QColor &color, double width = 6) {
    DrawingPath path;
    path.id = freshUuidString();
    path.kind = kind;
    path.points = std::move(points);
    path.color = color;
    path.lineWidth = width;
    return path;
}

std::vector<DrawingPath> oneOfEach() {
    std::vector<DrawingPath> all;
    std::vector<QPointF> wave;
    for (int i = 0; i <= 40; ++i)
        wave.emplace_back(0.08 + i * 0.006, 0.5 + 0.06 * std::sin(i * 0.5));
    all.push_back(annotation(DrawingKind::path, wave, EditorModel::colorPresets()[0]));
    QColor marker = EditorModel::colorPresets()[2];
    marker.setAlphaF(0.4F);
    all.push_back(annotation(DrawingKind::path, {{0.06, 0.175}, {0.55, 0.175}}, marker, 24));
    all.back().isHighlighter = true;
    all.push_back(annotation(DrawingKind::arrow, {{0.4, 0.8}, {0.62, 0.5}}, EditorModel::colorPresets()[5]));
    all.push_back(annotation(DrawingKind::rectangle, {{0.65, 0.2}, {0.9, 0.4}}, EditorModel::colorPresets()[3]));
    all.push_back(annotation(DrawingKind::oval, {{0.66, 0.55}, {0.92, 0.85}}, EditorModel::colorPresets()[6]));
    all.push_back(annotation(DrawingKind::text, {{0.1, 0.3}}, EditorModel::colorPresets()[7]));
    all.back().text = QStringLiteral("Look at this ridge");
    for (int i = 1; i <= 3; ++i) {
        all.push_back(annotation(DrawingKind::number, {{0.1 + 0.09 * i, 0.88}}, EditorModel::colorPresets()[1]));
        all.back().number = i;
    }
    return all;
}

struct Desk {
    explicit Desk(bool dark) : look(time), isDark(dark) {}

    TavrineEditorContainerView *make(int recent) {
        images.clear();
        for (int i = 0; i < recent; ++i)
            images.push_back({QStringLiteral("%1.jpg").arg(i), time.now() - Seconds(i * 20000.0)});
        auto *window = new TavrineEditorContainerView(
            {.ports = {time, pasteboard, panels, coder, center, QDir::tempPath(), files},
             .hooks = {},
             .history = {.images = [this] { return images; },
                         .cachedThumbnail =
                             [this](const QString &name) {
                                 return cached.contains(name) ? std::optional(cached[name]) : std::nullopt;
                             },
                         .makeThumbnail = [this](const QString &name) -> std::optional<QImage> {
                             if (name == QStringLiteral("3.jpg"))
                                 return std::nullopt;
                             const int n = int(cached.size());
                             cached[name] = n % 3 == 1   ? photograph(200, 480)
                                            : n % 3 == 2 ? photograph(60, 40)
                                                         : photograph(480, 320);
                             return cached[name];
                         },
                         .loadImage = {}},
             .close = [] {}});
        look.setTheme(window, isDark ? look::darkTheme() : look::lightTheme());
        window->resize(960, 660);
        window->show();
        settle();
        return window;
    }
    void settle() {
        for (int i = 0; i < 3; ++i) {
            QTest::qWait(20);
            time.advance(1s);
        }
        QTest::qWait(20);
    }
    void save(QWidget *window, const char *name) {
        settle();
        const QString path =
            folder + QStringLiteral("/%1-%2.png").arg(QLatin1String(name), QLatin1String(isDark ? "dark" : "light"));
        QPixmap picture = window->grab();
        if (QWidget *popup = QApplication::activePopupWidget()) {
            QPainter painter(&picture);
            painter.drawPixmap(popup->pos() - window->pos(), popup->grab());
        }
        picture.save(path);
    }

    QString folder;
    VirtualTime time;
    look::Look look;
    bool isDark;
    FakePasteboard pasteboard;
    FakeFilePanels panels{time};
    FakeImageCoder coder;
    NotificationCenter center;
    SerialQueue files{QStringLiteral("com.tavrine.snip")};
    std::vector<RecentImage> images;
    QHash<QString, QImage> cached;
};

QAbstractButton *button(QWidget *window, const char *name) {
    for (QAbstractButton *each : window->findChildren<QAbstractButton *>())
        if (each->accessibleName() == QLatin1String(name) || each->text() == QLatin1String(name) ||
            each->toolTip() == QLatin1String(name))
            return each;
    std::fprintf(stderr, "no button %s\n", name);
    std::abort();
}

void paintAll(const QString &folder, bool isDark) {
    Desk desk(isDark);
    desk.folder = folder;
    std::unique_ptr<TavrineEditorContainerView> window(desk.make(0));
    desk.save(window.get(), "landing-none");
    desk.pasteboard.copyFromOutside(photograph(100, 60));
    window.reset(desk.make(30));
    desk.save(window.get(), "landing-many");
    QMimeData data;
    data.setImageData(photograph(10, 10));
    window->landing()->model().dragEntered(data);
    desk.save(window.get(), "landing-drag");
    window.reset(desk.make(3));
    desk.save(window.get(), "landing-few");
    window->resize(683, 360);
    desk.save(window.get(), "landing-narrow");
    window->resize(960, 660);

    window->select(photograph(1200, 800));
    desk.save(window.get(), "editor-fresh");
    EditorModel *model = &window->editor()->model();
    model->setDrawings(oneOfEach());
    test::PlayedUpload played{desk.time, desk.pasteboard};
    model->setUploadButton(played.makeButton(UploadButton::AfterLink::returnToIdle));
    model->setCurrentTool(DrawingTool::numberStamp);
    model->setNextStampNumber(4);
    desk.save(window.get(), "editor-annotations");
    for (const auto &[size, name] :
         {std::pair(QSize(683, 360), "editor-narrow"), {QSize(480, 320), "editor-smallest"}}) {
        window->resize(size);
        desk.save(window.get(), name);
    }
    window->resize(900, 600);
    model->copyFlattened();
    model->upload();
    played.prepare();
    QTest::qWait(30);
    desk.time.advance(300ms);
    QTest::qWait(30);
    window->grab().save(folder + QStringLiteral("/editor-copied-%1.png").arg(isDark ? u"dark" : u"light"));
    played.fail();
    button(window.get(), "Annotation color")->click();
    desk.save(window.get(), "editor-colours");
    QApplication::activePopupWidget()->close();
    button(window.get(), "Arrow")->click();
    desk.save(window.get(), "editor-sizes");
    QApplication::activePopupWidget()->close();
    model->setCurrentTool(DrawingTool::text);
    auto *canvas = window->findChild<DrawView *>();
    QTest::mouseClick(canvas, Qt::LeftButton, {}, QPoint(300, 60));
    QTest::keyClicks(canvas->activeTextField(), QStringLiteral("Typed just now"));
    desk.save(window.get(), "editor-typing");
    button(window.get(), "Crop image area")->click();
    desk.save(window.get(), "editor-crop");
    model->dragCrop({0.3, 0.25}, {0.8, 0.75}, {1, 1});
    desk.save(window.get(), "editor-crop-selected");
    window->resize(480, 320);
    desk.save(window.get(), "editor-crop-smallest");
    window->resize(900, 600);
    model->cancelCrop();
    model->setCurrentTool(DrawingTool::eraser);
    QTest::mouseMove(window->findChild<DrawView *>(), QPoint(300, 120));
    desk.save(window.get(), "editor-eraser");
    window->editor()->setScanningOverlay(QStringLiteral("Extracting text…"));
    desk.save(window.get(), "editor-scanning");
    window->editor()->setScanningOverlay({});
    QTest::keyClick(window->editor(), Qt::Key_1, Qt::ControlModifier);
    desk.save(window.get(), "editor-full-size");
    QImage clear(300, 180, QImage::Format_ARGB32_Premultiplied);
    clear.fill(Qt::transparent);
    QPainter(&clear).fillRect(60, 40, 100, 100, QColor(200, 40, 90, 128));
    window->select(clear);
    desk.save(window.get(), "editor-transparent");
    window->select(photograph(1, 1));
    desk.save(window.get(), "editor-one-pixel");
}

void measure() {
    Desk desk(false);
    const QImage large = photograph(3840, 2160);
    QElapsedTimer watch;
    watch.start();
    std::unique_ptr<TavrineEditorContainerView> window(desk.make(0));
    watch.restart();
    window->select(large);
    window->repaint();
    std::printf("editor of 3840 x 2160, made and painted: %.1f ms\n", double(watch.nsecsElapsed()) / 1e6);
    auto *canvas = window->findChild<DrawView *>();
    std::vector<DrawingPath> drawings;
    for (int i = 0; i < 10; ++i)
        for (const DrawingPath &each : oneOfEach())
            drawings.push_back(each);
    window->editor()->model().setDrawings(drawings);
    QTest::qWait(50);
    for (const auto &[tool, name] : {std::pair(DrawingTool::pen, "pen"),
                                     {DrawingTool::highlighter, "highlighter"},
                                     {DrawingTool::oval, "circle"}}) {
        window->editor()->model().setCurrentTool(tool);
        QTest::mousePress(canvas, Qt::LeftButton, {}, QPoint(20, 20));
        double longest = 0;
        double sum = 0;
        constexpr int steps = 300;
        for (int i = 0; i < steps; ++i) {
            const QPointF place(20 + i * 2, 200 + 150 * std::sin(i * 0.05));
            QMouseEvent move(QEvent::MouseMove, place, canvas->mapToGlobal(place), Qt::NoButton, Qt::LeftButton, {});
            watch.restart();
            QApplication::sendEvent(canvas, &move);
            QApplication::sendPostedEvents();
            QApplication::processEvents();
            const double took = double(watch.nsecsElapsed()) / 1e6;
            longest = std::max(longest, took);
            sum += took;
        }
        QTest::mouseRelease(canvas, Qt::LeftButton, {}, QPoint(600, 200));
        std::printf("a move of the %s over 90 annotations, painted: %.2f ms on average, %.2f at most\n", name,
                    sum / steps, longest);
    }
    watch.restart();
    window->resize(1400, 900);
    QApplication::processEvents();
    window->repaint();
    std::printf("resized to 1400 x 900: %.1f ms\n", double(watch.nsecsElapsed()) / 1e6);
    watch.restart();
    QTest::keyClick(window->editor(), Qt::Key_1, Qt::ControlModifier);
    window->repaint();
    std::printf("zoomed to 100 %%: %.1f ms\n", double(watch.nsecsElapsed()) / 1e6);
    watch.restart();
    window->editor()->model().copyFlattened();
    std::printf("flattened and handed to the pasteboard: %.1f ms\n", double(watch.nsecsElapsed()) / 1e6);
}

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: editor_pictures FOLDER\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(folder);
    for (const bool isDark : {false, true})
        paintAll(folder, isDark);
    measure();
    return 0;
}
