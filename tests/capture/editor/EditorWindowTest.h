#pragma once

#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/SerialQueue.h"
#include "capture/editor/CropOverlayView.h"
#include "capture/editor/DrawView.h"
#include "capture/editor/EditorStageView.h"
#include "capture/editor/EditorView.h"
#include "capture/editor/RecentImageTile.h"
#include "capture/editor/RecentStripView.h"
#include "capture/editor/TavrineEditorContainerView.h"
#include "capture/editor/ToolButton.h"
#include "look/Button.h"
#include "look/PillView.h"
#include "upload/PlayedUpload.h"

#include <QApplication>
#include <QColorDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

#include <gmock/gmock.h>

namespace tavrine {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

inline QString str(const char *text) {
    return QString::fromUtf8(text);
}

inline QImage picture(int width, int height, const QColor &color = Qt::darkGreen) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

/// The container with everything in it, in a window, over fakes. Nothing moves, since there is no Look.
class EditorWindowTest : public testing::Test {
protected:
    void SetUp() override {
        make();
        window->resize(960, 660);
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    void make() {
        window = std::make_unique<TavrineEditorContainerView>(TavrineEditorContainerView::Parts{
            .ports = {time, pasteboard, panels, coder, center, home.path(), files},
            .hooks = {.opened = [this](EditorView &view) { opened = &view; },
                      .extractText = [this](EditorView &view) { extractedFrom = &view; },
                      .scanQr = [this](EditorView &view) { scannedIn = &view; }},
            .history = {.images = [this] { return images; },
                        .cachedThumbnail = [](const QString &) { return std::optional<QImage>(); },
                        .makeThumbnail =
                            [this](const QString &name) {
                                thumbnails.push_back(name.toStdString());
                                return std::optional<QImage>();
                            },
                        .loadImage = [](const QString &) { return std::optional(picture(33, 22)); }},
            .close = [this] { ++closes; }});
    }
    void edit(const QImage &image = picture(800, 400)) { window->select(image); }

    [[nodiscard]] EditorView &view() const { return *window->editor(); }
    [[nodiscard]] EditorModel &model() const { return view().model(); }
    [[nodiscard]] EditorStageView &stage() const { return *window->editor()->findChild<EditorStageView *>(); }
    [[nodiscard]] DrawView *canvas() const { return window->editor()->findChild<DrawView *>(); }
    [[nodiscard]] QAbstractButton *button(const char *name) const {
        for (QAbstractButton *each : window->findChildren<QAbstractButton *>()) {
            if (each->isVisible() && (each->text() == str(name) || each->accessibleName() == str(name)))
                return each;
        }
        return nullptr;
    }
    [[nodiscard]] std::vector<std::string> buttons() const {
        std::vector<std::string> names;
        for (QAbstractButton *each : window->findChildren<QAbstractButton *>()) {
            if (each->isVisible())
                names.push_back((each->text().isEmpty() ? each->accessibleName() : each->text()).toStdString());
        }
        return names;
    }
    [[nodiscard]] PillView *pill(const char *text) const {
        for (PillView *each : window->findChildren<PillView *>()) {
            if (each->accessibleName() == str(text))
                return each;
        }
        return nullptr;
    }
    /// The colour at a point: the tests run at one and at two pixels for each.
    [[nodiscard]] QColor at(const QImage &image, QPoint place) const {
        return image.pixelColor(place * window->devicePixelRatioF());
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(window->windowHandle(), key, modifiers);
    }
    void command(Qt::Key key) { press(key, Qt::ControlModifier); }
    void drag(QWidget *widget, QPoint from, QPoint to) {
        QTest::mousePress(widget, Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, widget->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &move);
        QTest::mouseRelease(widget, Qt::LeftButton, {}, to);
    }
    void wheel(QPoint place, int notches, Qt::KeyboardModifiers modifiers) {
        QWheelEvent event(place, stage().mapToGlobal(place), {}, QPoint(0, 120 * notches), Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&stage(), &event);
    }
    void startTyping(const char *text) {
        model().setCurrentTool(DrawingTool::text);
        QTest::mouseClick(canvas(), Qt::LeftButton, {}, QPoint(100, 100));
        ASSERT_TRUE(canvas()->activeTextField());
        QTest::keyClicks(canvas()->activeTextField(), str(text));
    }

    QTemporaryDir home;
    VirtualTime time;
    FakePasteboard pasteboard;
    test::PlayedUpload played{time, pasteboard};
    FakeFilePanels panels{time};
    FakeImageCoder coder;
    NotificationCenter center;
    SerialQueue files{QStringLiteral("com.tavrine.snip")};
    std::vector<RecentImage> images;
    std::vector<std::string> thumbnails;
    EditorView *opened = nullptr;
    EditorView *extractedFrom = nullptr;
    EditorView *scannedIn = nullptr;
    int closes = 0;
    std::unique_ptr<TavrineEditorContainerView> window;
};

} // namespace tavrine
