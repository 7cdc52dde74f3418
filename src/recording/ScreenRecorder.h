#pragma once

#include "recording/CountdownModel.h"
#include "recording/LeavingEngines.h"
#include "recording/RecordingPreview.h"
#include "recording/RecordingSelection.h"
#include "recording/RecordingTexts.h"

#include <QStringList>

#include <vector>

namespace tavrine {

/// Walks a person through a recording: permission, area, set-up, countdown, the recording with its border and stop bar,
/// and the preview. One instance, as long as the process; lives on the main thread.
///
///  1. Nothing keeps the flow from being started twice. An overlay that is open is replaced by the next, and a
///     recording under way by the next one; what was recorded of it is shown once the person is free again.
///  2. Every movie that has a picture and was neither saved nor deleted is shown in a preview, one after the other.
///  3. A recording that ends by itself, for want of room or of its encoder, ends for the person at that moment.
class ScreenRecorder final : public QObject {
    Q_OBJECT

public:
    /// All outlive it.
    struct Ports {
        RecordingSelection::Ports selection;
        ScreenRecordingEngine::Ports engine;
        RecordingPreview::Ports preview;
    };
    struct Actions {
        std::function<bool()> isEnabled;        ///< the switch of the feature
        std::function<bool()> mayCaptureScreen; ///< asks the person when it may not
        std::function<void()> activateApplication;
        std::function<void()> showMicrophoneAlert;
        std::function<void(const QString &message, const QString &icon)> showToast;
    };
    struct Content {
        QWidget *view = nullptr;
        QSizeF fittingSize;
    };
    /// What stands in the windows, taken over by them. One that is missing leaves its window empty.
    struct Views {
        RecordingSelection::View selection;
        std::function<QWidget *(const QRectF &appKitRect, const Screen &screen)> border;
        std::function<Content(ScreenRecorder &recorder)> stopBar;
        std::function<Content()> finishing;
        std::function<QWidget *(std::shared_ptr<CountdownModel>)> countdown;
        RecordingPreview::View preview;
    };

    static constexpr Seconds restartDelay{0.15};
    static constexpr Seconds durationStep{1.0};
    static constexpr Seconds untilFinishingIsShown{0.3};    ///< what is there before that needs no words
    static constexpr std::chrono::seconds silenceIsTold{3}; ///< of a microphone that should be heard
    static constexpr QSizeF leastStopBar{200, 40};

    ScreenRecorder(const Ports &ports, Actions actions, RecordingPreview::Saving saving, Views views);
    ~ScreenRecorder() override;

    void startScreenRecording();
    /// Ends the recording and leads to the preview.
    void stopRecording();
    /// Ends the recording and throws it away.
    void cancelRecording();
    /// Cancels, and records the same area anew.
    void restartRecording();
    /// Gives everything up, in a later turn.
    void unload();

    /// Shows these recordings, which an earlier run has left, and those that were put off, as soon as the person is
    /// free.
    void offer(const QStringList &paths);
    /// For an alert that would lie under it.
    void clearSelectionWindow() { m_selection.clear(); }
    /// The bar has another size now.
    void fitStopBar(QSizeF fittingSize);

    [[nodiscard]] bool isRecording() const { return m_isRecording; }
    [[nodiscard]] Seconds recordingDuration() const { return m_recordingDuration; }
    /// The recording should have sound and has heard none for some seconds.
    [[nodiscard]] bool isMicrophoneSilent() const { return m_isMicrophoneSilent; }
    [[nodiscard]] const std::optional<QString> &tempOutputPath() const { return m_tempOutputPath; }

    // The windows; null while there are none.
    [[nodiscard]] PanelWindow *overlayWindow() const { return m_selection.window(); }
    [[nodiscard]] PanelWindow *borderOverlayWindow() const { return m_border.window(); }
    [[nodiscard]] PanelWindow *floatingStopWindow() const { return m_stopBar.window(); }
    [[nodiscard]] PanelWindow *finishingWindow() const { return m_finishing.window(); }
    [[nodiscard]] PanelWindow *countdownWindow() const { return m_countdown.window(); }
    [[nodiscard]] PanelWindow *previewWindow() const { return m_preview.window(); }
    // What is behind them.
    [[nodiscard]] ScreenRecorderSelectionModel *selectionModel() const { return m_selection.model(); }
    [[nodiscard]] ScreenRecordingPreviewModel *previewModel() const { return m_preview.model(); }

Q_SIGNALS:
    void recordingChanged(); ///< state, duration, or whether the microphone is heard

private:
    using Engine = LeavingEngines::Engine;

    void selected(const RecordingArea &area, int delaySeconds);
    void startRecording(const RecordingArea &area);
    void startEngine(const Engine &engine, const RecordingArea &area);
    void started(const std::optional<RecordingError> &error);
    void tick();
    void endRecording();
    void finish(RecordingEnd end);
    void finishOther(const Engine &engine);
    void take(const ScreenRecordingEngine &engine, RecordingEnd end, bool isShownAtOnce);
    [[nodiscard]] std::weak_ptr<int> awaitMovie();
    void stopAwaiting();
    void showBorder(const RecordingArea &area);
    void showStopBar(const RecordingArea &area);
    void showFinishing(const Screen &screen);
    [[nodiscard]] QRectF outOfPictures(const QRectF &bar) const;
    void keepStopBarOnScreen();
    void hideCountdown();
    void tearDown();
    void offerSoon();
    [[nodiscard]] bool isFree() const;

    Ports m_ports;
    Actions m_actions;
    Views m_views;
    RecordingSelection m_selection;
    OverlayWindow m_border;
    OverlayWindow m_stopBar;
    OverlayWindow m_finishing;
    OverlayWindow m_countdown;
    std::shared_ptr<CountdownModel> m_countdownModel;
    RecordingPreview m_preview;
    Engine m_recordingEngine;
    LeavingEngines m_leaving;
    std::unique_ptr<Timer> m_durationTimer;
    std::optional<QString> m_tempOutputPath; ///< of the recording under way
    std::optional<RecordingArea> m_lastArea;
    std::vector<ShownRecording> m_unseen; ///< still to be shown
    std::vector<ShownRecording> m_putOff; ///< whose preview the desktop has closed
    std::shared_ptr<int> m_awaited;       ///< there while somebody waits for the movie of a recording that has ended
    Seconds m_recordingDuration{0};
    bool m_isRecording = false;
    bool m_isMicrophoneSilent = false;
    bool m_isRestarting = false; ///< the next recording begins in a moment
    Screens::Token m_screenChanges;
};

} // namespace tavrine
