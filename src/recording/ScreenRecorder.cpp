#include "recording/ScreenRecorder.h"

#include "base/Print.h"
#include "base/PrivateFiles.h"
#include "base/Time.h"
#include "base/Uuid.h"
#include "panels/Placement.h"
#include "recording/RecordingLeftovers.h"
#include "recording/StopBarPlace.h"

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
                   .onCancelled = [this] { offerSoon(); },
                   .isRecording = [this] { return m_isRecording; },
                   .stopRecording = [this] { stopRecording(); }},
                  m_views.selection),
      m_border(ports.selection.windows, ports.selection.time), m_stopBar(ports.selection.windows, ports.selection.time),
      m_finishing(ports.selection.windows, ports.selection.time),
      m_countdown(ports.selection.windows, ports.selection.time),
      m_preview(
          ports.preview, std::move(saving),
          {.activateApplication = [this] { m_actions.activateApplication(); },
           .showToast = [this](const QString &message, const QString &icon) { m_actions.showToast(message, icon); },
           .onUnseen = [this](const ShownRecording &recording) { m_unseen.push_back(recording); },
           .onPutOff = [this](const ShownRecording &recording) { m_putOff.push_back(recording); },
           .onLeft = [this] { offerSoon(); }},
          m_views.preview),
      m_leaving(ports.selection.time),
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
    stopAwaiting(); // the bar takes the place of its sign
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
    engine->setOnWriterEnded([this, self = QPointer(this), weak = std::weak_ptr(engine)] {
        if (!self || weak.lock() != m_recordingEngine)
            return;
        endRecording();
        finish(RecordingEnd::byItself);
    });
    engine->start({.displayID = area.screen.number,
                   .area = area.appKitRect,
                   .excludedWindows = own,
                   .screen = area.screen,
                   .outputPath = *m_tempOutputPath,
                   .includeAudio = area.includeAudio},
                  [this, self = QPointer(this), weak = std::weak_ptr(engine)](const auto &error) {
                      if (self && m_recordingEngine && weak.lock() == m_recordingEngine)
                          started(error);
                  });
}

void ScreenRecorder::started(const std::optional<RecordingError> &error) {
    if (error) {
        printLine(QStringLiteral("DEBUG: Failed to start ScreenCaptureKit recording: ") + error->description());
        m_border.hide();
        m_stopBar.hide();
        m_leaving.dropSoon(std::exchange(m_recordingEngine, nullptr)); // this is its own call
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

void ScreenRecorder::stopRecording() {
    printLine(QStringLiteral("DEBUG: ScreenRecorder.stopRecording() called"));
    endRecording();
    if (m_recordingEngine)
        finish(RecordingEnd::wanted);
    else
        printLine(QStringLiteral("DEBUG: stopRecording() found no active recordingEngine"));
}

void ScreenRecorder::finish(RecordingEnd end) {
    m_tempOutputPath.reset(); // no cancel that follows is meant for it
    const auto log = [](const auto &path, const auto &error) {
        if (error)
            printLine(QStringLiteral("DEBUG: Recording finish error: ") + *error);
        else if (!path)
            printLine(QStringLiteral("DEBUG: Recording finished with no output URL and no error"));
        else
            printLine(QStringLiteral("DEBUG: Recording finished successfully at ") + *path +
                      QStringLiteral(", showing preview"));
    };
    m_leaving.stop(std::exchange(m_recordingEngine, nullptr), log,
                   [this, end, awaited = awaitMovie()](const auto &gone) {
                       if (!awaited.expired())
                           stopAwaiting();
                       take(gone, end, true);
                   });
}

/// A recording that another has replaced is no less the person's.
void ScreenRecorder::finishOther(const Engine &engine) {
    m_durationTimer.reset();
    m_isRecording = false;
    m_leaving.stop(
        engine, [](const auto &, const auto &) {},
        [this](const auto &gone) { take(gone, RecordingEnd::wanted, false); });
}

/// What was written is the person's, whole or not.
void ScreenRecorder::take(const ScreenRecordingEngine &engine, RecordingEnd end, bool isShownAtOnce) {
    const ShownRecording recording{.path = engine.outputPath()};
    const bool isThere = mayHoldPictures(recording.path);
    const QString notice = endNotice(end, engine.failure(), isThere);
    if (!notice.isEmpty())
        m_actions.showToast(notice, QStringLiteral("exclamationmark.triangle.fill"));
    if (isThere && isShownAtOnce && m_actions.isEnabled())
        m_preview.show({.path = recording.path, .notice = notice});
    else if (isThere)
        m_unseen.push_back({.path = recording.path, .notice = notice});
    offerSoon();
}

void ScreenRecorder::cancelRecording() {
    endRecording();
    const auto path = std::exchange(m_tempOutputPath, std::nullopt);
    if (const Engine engine = std::exchange(m_recordingEngine, nullptr))
        m_leaving.stop(engine); // which makes no file from here on
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
    if (m_preview.isOpen()) // nobody has looked at it to its end
        m_unseen.push_back(m_preview.shown());
    m_preview.close();
    stopAwaiting();
    if (const Engine engine = std::exchange(m_recordingEngine, nullptr))
        m_leaving.stop(engine);
    Q_EMIT recordingChanged();
}

// What was recorded and not seen.

void ScreenRecorder::offer(const QStringList &paths) {
    for (const QString &path : paths)
        m_unseen.push_back({.path = path});
    m_unseen.insert(m_unseen.end(), m_putOff.begin(), m_putOff.end());
    m_putOff.clear();
    offerSoon();
}

bool ScreenRecorder::isFree() const {
    return !m_selection.window() && !m_countdownModel && !m_recordingEngine && !m_isRestarting && !m_awaited &&
           !m_preview.isOpen() && m_actions.isEnabled();
}

void ScreenRecorder::offerSoon() {
    m_ports.selection.time.async(this, [this] {
        while (isFree() && !m_unseen.empty()) {
            const ShownRecording next = m_unseen.front();
            m_unseen.erase(m_unseen.begin());
            if (QFile::exists(next.path))
                m_preview.show(next);
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
        m_stopBar.show(overScreen(stopBarTitle(), size, false), outOfPictures(placeOfStopBar(area.screen, size)),
                       content.view, OverlayWindow::Keyboard::leftWhereItIs);
    });
}

/// Where the bar was, when the movie of a recording that has ended takes long.
std::weak_ptr<int> ScreenRecorder::awaitMovie() {
    m_awaited = std::make_shared<int>();
    m_ports.selection.time.asyncAfter(untilFinishingIsShown, this, [this, awaited = std::weak_ptr(m_awaited)] {
        if (!awaited.expired())
            showFinishing(m_lastArea->screen);
    });
    return m_awaited;
}

void ScreenRecorder::showFinishing(const Screen &screen) {
    const Content content = m_views.finishing ? m_views.finishing() : Content{};
    const QSizeF size = content.fittingSize;
    m_finishing.show(overScreen(QStringLiteral("Finishing"), size, true), placeOfStopBar(screen, size), content.view,
                     OverlayWindow::Keyboard::leftWhereItIs);
}

void ScreenRecorder::stopAwaiting() {
    m_awaited.reset();
    m_finishing.clear();
}

/// A desktop that tells no windows keeps none out of its pictures.
QRectF ScreenRecorder::outOfPictures(const QRectF &bar) const {
    const bool isInPictures = m_lastArea && !m_ports.engine.streams.tellsWindows();
    return isInPictures ? movedOutOf(*m_lastArea, bar, m_ports.selection.screens.screens()) : bar;
}

/// Without its bar nobody could end a recording.
void ScreenRecorder::keepStopBarOnScreen() {
    PanelWindow *window = m_stopBar.window();
    if (window)
        window->setFrame(outOfPictures(movedOntoAScreen(m_ports.selection.screens, window->frame())));
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
    window->setFrame(outOfPictures({right - size.width(), maxY(frame) - size.height(), size.width(), size.height()}));
}

} // namespace tavrine
