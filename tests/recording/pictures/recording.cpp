// Shows the recorder's windows to people, as pictures in a folder: recording_pictures FOLDER.
#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/FakeDesktop.h"
#include "look/Button.h"
#include "look/Look.h"
#include "recording/CountdownModel.h"
#include "recording/CountdownOverlayView.h"
#include "recording/FinishingView.h"
#include "recording/FloatingStopBarView.h"
#include "recording/RecordingBorderView.h"
#include "recording/ScreenRecorder.h"
#include "recording/ScreenRecorderSelectionModel.h"
#include "recording/ScreenRecorderSelectionView.h"
#include "recording/ScreenRecordingPreviewModel.h"
#include "recording/ScreenRecordingPreviewView.h"

#include <QApplication>
#include <QFile>
#include <QLinearGradient>
#include <QPainter>
#include <QTemporaryDir>

using namespace tavrine;

namespace {

constexpr QSize screen(1024, 600);

/// Somebody's desktop.
QImage desktop(const QSize &size, qreal scale, bool isDark) {
    QImage image(size * scale, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, size.width(), size.height());
    sky.setColorAt(0, isDark ? QColor(0x22, 0x2B, 0x3D) : QColor(0x9F, 0xBF, 0xE8));
    sky.setColorAt(1, isDark ? QColor(0x0E, 0x11, 0x18) : QColor(0xF0, 0xE4, 0xD0));
    painter.fillRect(QRect({}, size), sky);
    painter.fillRect(QRect(120, 90, 620, 400), isDark ? QColor(0x2B, 0x2B, 0x30) : QColor(Qt::white));
    painter.setPen(isDark ? QColor(0xD0, 0xD0, 0xD8) : QColor(0x33, 0x33, 0x38));
    for (int line = 0; line < 15; ++line)
        painter.drawText(QPointF(150, 130 + line * 24),
                         QStringLiteral("The quick brown fox jumps over the lazy dog, line %1").arg(line));
    return image;
}

struct Studio {
    QString folder;
    bool isDark;
    VirtualTime &time;

    /// The widget over the desktop, as a compositor shows it.
    void save(QWidget &widget, const char *name, QPoint place = {}, QSize ground = screen) const {
        widget.show();
        QApplication::processEvents();
        time.advance(Seconds{0.5}); // what moves is where it goes
        const qreal scale = widget.devicePixelRatioF();
        QImage picture(widget.size() * scale, QImage::Format_ARGB32_Premultiplied);
        picture.setDevicePixelRatio(scale);
        picture.fill(Qt::transparent);
        widget.render(&picture, {}, {}, QWidget::DrawChildren);
        QImage image = desktop(ground, scale, isDark);
        QPainter(&image).drawImage(place, picture);
        image.save(folder + u'/' + QLatin1String(name) +
                   (isDark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png")));
    }
};

void showSelection(const Studio &studio) {
    const auto overlay = [&studio](const char *name, auto prepare, QSize size = screen) {
        auto model = std::make_shared<ScreenRecorderSelectionModel>(size, 1.0, ScreenRecorderSelectionModel::Actions{});
        ScreenRecorderSelectionView view(model);
        view.resize(size);
        view.show();
        prepare(*model);
        studio.save(view, name, {}, size);
    };
    using Model = ScreenRecorderSelectionModel;
    overlay("overlay", [](Model &) {});
    {
        ScreenRecorderSelectionView view(std::make_shared<ScreenRecorderSelectionModel>(
            screen, 1.0,
            ScreenRecorderSelectionModel::Actions{.onMic = {}, .onStart = {}, .onCancel = {}, .onStop = [] {}}));
        view.resize(screen);
        studio.save(view, "overlay-recording");
    }
    overlay("overlay-drag", [](Model &model) { model.drag({160, 230}, {640, 500}); });
    overlay("overlay-drag-bottom", [](Model &model) { model.drag({300, 260}, {1024, 600}); });
    overlay("overlay-drag-small", [](Model &model) { model.drag({2, 3}, {9, 12}); });
    overlay("card", [](Model &model) {
        model.drag({130, 100}, {730, 480});
        model.endDrag();
        model.flipMic();
        model.setTimerDelay(3);
    });
    overlay("card-corner", [](Model &model) {
        model.drag({900, 500}, {1020, 596});
        model.endDrag();
    });
    overlay("card-everything", [](Model &model) { model.selectAll(); });
    overlay(
        "card-low", [](Model &model) { model.selectAll(); }, screen / 2);
}

void showPreview(const Studio &studio, VirtualTime &time, const QString &path) {
    FakeMovieAsset asset;
    FakeMoviePlayers players(time);
    FakeFilePanels panels(time);
    const auto preview = [&](const char *name, const QString &fileName, const QString &folder, bool hasAudio,
                             QSize size, auto prepare, const QString &notice = {}) {
        asset.setFacts(
            MovieFacts{.naturalSize = size, .hasAudioTrack = hasAudio, .duration = std::chrono::seconds(127)});
        auto model = std::make_shared<ScreenRecordingPreviewModel>(
            path, fileName, folder, ScreenRecordingPreviewModel::Ports{asset, players, panels},
            ScreenRecordingPreviewModel::Actions{});
        model->setNotice(notice);
        ScreenRecordingPreviewView view(model);
        view.resize(RecordingPreview::size.toSize());
        model->load();
        asset.answer();
        view.show();
        time.runPending();
        prepare(*model, view);
        studio.save(view, name, {24, 40}, {430, 510});
        model->stop();
    };
    const QString plainName = QStringLiteral("recording_2026-01-31_12.00.00");
    const QString plainFolder = QStringLiteral("/home/ada/Documents/Tavrine QuickShots");
    using Model = ScreenRecordingPreviewModel;
    preview("preview", plainName, plainFolder, true, {1280, 720}, [](Model &, QWidget &) {});
    preview("preview-muted-tall", plainName, plainFolder, true, {400, 900}, [](Model &model, QWidget &view) {
        model.toggleMuted();
        view.activateWindow();
        for (QAbstractButton *button : view.findChildren<QAbstractButton *>())
            if (button->text() == QStringLiteral("Copy Video"))
                button->setFocus(Qt::TabFocusReason);
    });
    preview("preview-long",
            QStringLiteral("A rather long name of a recording that somebody gave it on a Friday, take 12"),
            QStringLiteral("/home/ada/Documents/Work/Customers/A rather long name of a customer/Films/2026"), false,
            {2560, 300}, [](Model &, QWidget &) {});
    preview(
        "preview-broken", plainName, plainFolder, true, {1280, 720}, [](Model &, QWidget &) {},
        QStringLiteral("Recording stopped: the disk is full"));
    players.failNext(QStringLiteral("no decoder"));
    preview("preview-failed", plainName, plainFolder, true, {1280, 720},
            [&time](Model &, QWidget &) { time.runPending(); });
}

/// A recording over fakes that hears nothing.
void showBar(const Studio &studio, const QString &home) {
    FakeDesktop desktop({.applicationSupport = home, .home = home, .documents = home, .temporary = home});
    desktop.access().setMicrophone(MicrophoneAuthorization::authorized);
    MediaTime now{};
    FloatingStopBarView *bar = nullptr;
    VirtualTime &time = desktop.time();
    TakenCorner corner;
    ScreenRecorder recorder(
        {.selection = {time, desktop.access(), desktop.screens(), desktop.panelWindows(), desktop.eventMonitors()},
         .engine = {desktop.screenStreams(), desktop.microphoneSessions(), desktop.movieWriters(), time,
                    [&now] { return now; }},
         .preview = {time, desktop.screens(), desktop.panelWindows(), desktop.movieAsset(), desktop.moviePlayers(),
                     desktop.filePanels(), desktop.pasteboard(), desktop.folders(), corner}},
        {.isEnabled = [] { return true; },
         .mayCaptureScreen = [] { return true; },
         .activateApplication = [] {},
         .showMicrophoneAlert = [] {},
         .showToast = [](const QString &, const QString &) {}},
        {},
        {.selection = {},
         .border = {},
         .stopBar =
             [&bar](ScreenRecorder &of) {
                 bar = new FloatingStopBarView(of);
                 return ScreenRecorder::Content{bar, bar->sizeHint()};
             },
         .finishing = {},
         .countdown = {},
         .preview = {}});
    recorder.startScreenRecording();
    recorder.selectionModel()->selectAll();
    recorder.selectionModel()->pressMic();
    recorder.selectionModel()->start();
    time.runPending();
    const auto show = [&](const char *name) {
        bar->resize(bar->sizeHint());
        studio.save(*bar, name, {40, 30}, {500, 110});
    };
    time.advance(Seconds{83});
    show("bar");
    now += ScreenRecorder::silenceIsTold;
    time.advance(Seconds{1});
    show("bar-silent");
    FinishingView finishing;
    finishing.resize(finishing.sizeHint());
    studio.save(finishing, "finishing", {40, 30}, {500, 110});
}

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    QTemporaryDir home;
    const QString path = home.filePath(QStringLiteral("movie.mp4"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.resize(48'300'000))
        return 1;
    for (const bool isDark : {false, true}) {
        VirtualTime time;
        FakeAppearance appearance;
        appearance.set({.colorScheme = isDark ? ColorScheme::dark : ColorScheme::light});
        look::Look look(time, &appearance);
        look.setCompositing(true);
        const Studio studio{QApplication::arguments().value(1), isDark, time};
        showSelection(studio);
        showPreview(studio, time, path);

        auto countdown = std::make_shared<CountdownModel>(3, time, [] {});
        CountdownOverlayView numbers(countdown);
        numbers.resize(screen);
        numbers.show();
        time.advance(Seconds{0.4});
        studio.save(numbers, "countdown");

        RecordingBorderView border({120, 110, 620, 400}, screen.height());
        border.resize(screen);
        studio.save(border, "border");

        showBar(studio, home.path());
    }
    return 0;
}
