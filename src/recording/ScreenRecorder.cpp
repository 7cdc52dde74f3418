#include "recording/ScreenRecorder.h"

#include "base/Print.h"
#include "base/PrivateFiles.h"
#include "base/Time.h"
#include "base/Uuid.h"
#include "panels/Placement.h"

#include <QFile>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

/// Of a window that lies over a screen while something is recorded, and is no part of the movie.
PanelDescription overScreen(const QString &title, QSizeF size, bool ignoresMouseEvents) {
    return {.title = title,
            .contentSize = size,
            .level = windowLevel::screenSaver,
            .canBecomeKey = false,
            .hasShadow = false,
            .isMovableByBackground = !ignoresMouseEvents,
            .ignoresMouseEvents = ignoresMouseEvents,
            .sharing = WindowSharing::none};
}

QString stopBarTitle() {
    return QStringLiteral("Recording");
}

} // namespace

ScreenRecorder::ScreenRecorder(const Ports &ports, Actions actions, RecordingPreview::Saving saving, Views views)
    : m_ports(ports), m_actions(std::move(actions)), m_views(std::move(views)),
      m_selection(m_ports.selection,
                  {.startScreenRecording = [this] { startScreenRecording(); },
                   .showMicrophoneAlert = [this] { m_actions.showMicrophoneAlert(); },
                   .onSelect = [this](const RecordingArea &area, int delay) { selected(area, delay); },
                   .onCancelled = [this] { offerSoon(); }},
                  m_views.selection),
      m_border(ports.selection.windows, ports.selection.time), m_stopBar(ports.selection.windows, ports.selection.time),
      m_countdown(ports.selection.windows, ports.selection.time),
      m_preview(
          ports.preview, std::move(saving),
          {.activateApplication = [this] { m_actions.activateApplication(); },
           .showToast = [this](const QString &message, const QString &icon) { m_actions.showToast(message, icon); },
           .onUnseen = [this](const QString &path) { m_unseen.append(path); },
           .onLeft = [this] { offerSoon(); }},
          m_views.preview),
      m_screenChanges(ports.selection.screens.onChange([this] { keepStopBarOnScreen(); })) {}

ScreenRecorder::~ScreenRecorder() = default;

// Into a recording.

void ScreenRecorder::startScreenRecording() {
    if (!m_actions.isEnabled()) {
        printLine(QStringLiteral("DEBUG: Screen Recorder is disabled in FeatureFlags."));
        return;
    }
    if (!m_actions.mayCaptureScreen())
        return;
    m_actions.activateApplication();
    if (const auto screen = screenForTool(m_ports.selection.screens))
        m_selection.open(*screen);
}

void ScreenRecorder::selected(const RecordingArea &area, int delaySeconds) {
    if (delaySeconds < 1) {
        startRecording(area);
        return;
    }
    hideCountdown();
    m_countdownModel = std::make_shared<CountdownModel>(delaySeconds, m_ports.selection.time, [this, area] {
        m_countdown.hide();
        m_countdownModel.reset();
        startRecording(area);
    });
    m_countdown.show(overScreen(QStringLiteral("Countdown"), area.screen.frame.size(), true), area.screen.frame,
                     m_views.countdown ? m_views.countdown(m_countdownModel) : nullptr,
                     OverlayWindow::Keyboard::leftWhereItIs);
    m_countdownModel->appear();
}

void ScreenRecorder::hideCountdown() {
    if (m_countdownModel)
        m_countdownModel->stop();
    m_countdownModel.reset();
}

void ScreenRecorder::startRecording(const RecordingArea &area) {
    m_lastArea = area;
    const QString &folder = m_ports.preview.folders.temporary;
    makePrivateFolder(folder);        // when it cannot be made, the writer tells
    m_recordingDuration = Seconds{0}; // the bar shows it from now on
    m_isMicrophoneSilent = false;
    m_tempOutputPath = folder + QStringLiteral("/tavrine-rec-") + freshUuidString() + QStringLiteral(".mp4");
    showBorder(area);
    showStopBar(area);
    if (const Engine other = std::exchange(m_recordingEngine, nullptr))
        finishOther(other);
    m_recordingEngine = std::make_shared<ScreenRecordingEngine>(m_ports.engine);
    // In a later turn the two windows are there.
    m_ports.selection.time.async(this, [this, weak = std::weak_ptr(m_recordingEngine), area] {
        if (const Engine engine = weak.lock(); engine && engine == m_recordingEngine)
            startEngine(engine, area);
    });
}

void ScreenRecorder::startEngine(const Engine &engine, const RecordingArea &area) {
    QList<WindowNumber> own;
    for (const PanelWindow *window : {m_border.window(), m_stopBar.window()})
        if (window)
            own.append(window->windowNumber());
    engine->start({.displayID = area.screen.number,
                   .area = area.appKitRect,
                   .excludedWindows = own,
                   .screen = area.screen,
                   .outputPath = *m_tempOutputPath,
                   .includeAudio = area.includeAudio},
                  [this, self = QPointer(this), weak = std::weak_ptr(engine)](const auto &error) {
                      if (self && weak.lock() == m_recordingEngine)
                          started(error);
                  });
}

void ScreenRecorder::started(const std::optional<RecordingError> &error) {
    if (error) {
        printLine(QStringLiteral("DEBUG: Failed to start ScreenCaptureKit recording: ") + error->description());
        m_border.hide();
        m_stopBar.hide();
        dropSoon(std::exchange(m_recordingEngine, nullptr)); // this is its own call
        offerSoon();
        return;
    }
    m_isRecording = true;
    m_recordingDuration = Seconds{0};
    m_durationTimer = m_ports.selection.time.repeat(durationStep, [this] { tick(); });
    Q_EMIT recordingChanged();
}

void ScreenRecorder::tick() {
    m_recordingDuration += durationStep;
    m_isMicrophoneSilent =
        m_recordingEngine && m_recordingEngine->microphoneSilence().value_or(MediaTime::zero()) >= silenceIsTold;
    Q_EMIT recordingChanged();
}

// Out of it.

void ScreenRecorder::endRecording() {
    m_durationTimer.reset();
    m_isRecording = false;
    m_isMicrophoneSilent = false;
    m_stopBar.hide();
    m_border.hide();
    Q_EMIT recordingChanged();
}

/// Keeps the engine until it has answered. `then` is called on its thread.
void ScreenRecorder::stopEngine(const Engine &engine, ScreenRecordingEngine::StopCompletion then) {
    m_leavingEngines.push_back(engine);
    engine->stop([this, self = QPointer(this), &time = m_ports.selection.time, gone = engine.get(),
                  then = std::move(then)](const auto &path, const auto &error) {
        then(path, error);
        time.async([this, self, gone] {
            if (self)
                drop(gone);
        });
    });
}

void ScreenRecorder::drop(const ScreenRecordingEngine *gone) {
    std::erase_if(m_leavingEngines, [gone](const Engine &one) { return one.get() == gone; });
}

void ScreenRecorder::dropSoon(const Engine &engine) {
    m_leavingEngines.push_back(engine);
    m_ports.selection.time.async(this, [this, gone = engine.get()] { drop(gone); });
}

void ScreenRecorder::stopRecording() {
    printLine(QStringLiteral("DEBUG: ScreenRecorder.stopRecording() called"));
    endRecording();
    const Engine engine = std::exchange(m_recordingEngine, nullptr);
    if (!engine) {
        printLine(QStringLiteral("DEBUG: stopRecording() found no active recordingEngine"));
        return;
    }
    stopEngine(engine,
               [this, self = QPointer(this), &time = m_ports.selection.time](const auto &path, const auto &error) {
                   if (error)
                       printLine(QStringLiteral("DEBUG: Recording finish error: ") + *error);
                   else if (!path)
                       printLine(QStringLiteral("DEBUG: Recording finished with no output URL and no error"));
                   else
                       printLine(QStringLiteral("DEBUG: Recording finished successfully at ") + *path +
                                 QStringLiteral(", showing preview"));
                   time.async([this, self, path] {
                       if (self && path)
                           m_preview.show(*path);
                       else if (self)
                           offerSoon();
                   });
               });
}

/// A recording that another has replaced is no less the person's.
void ScreenRecorder::finishOther(const Engine &engine) {
    m_durationTimer.reset();
    m_isRecording = false;
    stopEngine(engine, [this, self = QPointer(this), &time = m_ports.selection.time](const auto &path, const auto &) {
        time.async([this, self, path] {
            if (!self || !path)
                return;
            m_unseen.append(*path);
            offerSoon();
        });
    });
}

void ScreenRecorder::cancelRecording() {
    endRecording();
    const auto path = std::exchange(m_tempOutputPath, std::nullopt);
    if (const Engine engine = std::exchange(m_recordingEngine, nullptr))
        stopEngine(engine, [](const auto &, const auto &) {}); // which makes no file from here on
    if (path)
        QFile::remove(*path);
    offerSoon();
}

void ScreenRecorder::restartRecording() {
    if (!m_lastArea)
        return;
    m_isRestarting = true;
    const RecordingArea area = *m_lastArea;
    cancelRecording();
    m_recordingDuration = Seconds{0};
    m_ports.selection.time.asyncAfter(restartDelay, this, [this, area] {
        if (std::exchange(m_isRestarting, false))
            startRecording(area);
    });
}

void ScreenRecorder::unload() {
    m_ports.selection.time.async(this, [this] { tearDown(); });
}

void ScreenRecorder::tearDown() {
    printLine(QStringLiteral("DEBUG: ScreenRecorder unloading module and purging memory/CPU resources."));
    if (m_isRecording)
        cancelRecording();
    m_durationTimer.reset();
    m_recordingDuration = Seconds{0};
    m_isRecording = false;
    m_isRestarting = false;
    m_selection.clear();
    m_border.hide();
    m_stopBar.hide();
    hideCountdown();
    m_countdown.hide();
    m_preview.close();
    if (const Engine engine = std::exchange(m_recordingEngine, nullptr))
        stopEngine(engine, [](const auto &, const auto &) {});
    Q_EMIT recordingChanged();
}

// What was recorded and not seen.

void ScreenRecorder::offer(const QStringList &paths) {
    m_unseen.append(paths);
    offerSoon();
}

bool ScreenRecorder::isFree() const {
    return !m_selection.window() && !m_countdownModel && !m_recordingEngine && !m_isRestarting && !m_preview.isOpen() &&
           m_actions.isEnabled();
}

void ScreenRecorder::offerSoon() {
    m_ports.selection.time.async(this, [this] {
        while (isFree() && !m_unseen.isEmpty()) {
            const QString path = m_unseen.takeFirst();
            if (QFile::exists(path))
                m_preview.show(path);
        }
    });
}

// Windows.

void ScreenRecorder::showBorder(const RecordingArea &area) {
    m_ports.selection.time.async(this, [this, area] {
        m_border.show(overScreen(QStringLiteral("Recorded Area"), area.screen.frame.size(), true), area.screen.frame,
                      m_views.border ? m_views.border(area.appKitRect, area.screen) : nullptr,
                      OverlayWindow::Keyboard::leftWhereItIs);
    });
}

void ScreenRecorder::showStopBar(const RecordingArea &area) {
    m_ports.selection.time.async(this, [this, area] {
        const Content content = m_views.stopBar ? m_views.stopBar(*this) : Content{};
        const QSizeF size = content.fittingSize.expandedTo(leastStopBar);
        const QRectF &screen = area.screen.frame;
        const QRectF frame(screen.x() + (screen.width() - size.width()) * 0.5,
                           minY(screen) + screen.height() - size.height() - stopBarBelowTop, size.width(),
                           size.height());
        m_stopBar.show(overScreen(stopBarTitle(), size, false), frame, content.view,
                       OverlayWindow::Keyboard::leftWhereItIs);
    });
}

/// Without its bar nobody could end a recording.
void ScreenRecorder::keepStopBarOnScreen() {
    PanelWindow *window = m_stopBar.window();
    if (window)
        window->setFrame(movedOntoAScreen(m_ports.selection.screens, window->frame()));
}

void ScreenRecorder::fitStopBar(QSizeF fittingSize) {
    PanelWindow *window = m_stopBar.window();
    if (!window)
        return;
    const QSizeF size = fittingSize.expandedTo(leastStopBar);
    const QRectF frame = window->frame();
    // Its right end stays, where "Stop" is: growing round its middle brought "Restart" under a pointer on its way
    // there.
    const double right = frame.x() + frame.width();
    window->setFrame({right - size.width(), maxY(frame) - size.height(), size.width(), size.height()});
}

} // namespace tavrine
