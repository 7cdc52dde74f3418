#include "shell/tools/ScreenRecorderTool.h"

#include "base/UserDefaults.h"
#include "clipboard/ClipboardPreferences.h"
#include "look/Look.h"
#include "ports/Folders.h"
#include "recording/CountdownOverlayView.h"
#include "recording/FinishingView.h"
#include "recording/FloatingStopBarView.h"
#include "recording/RecordingBorderView.h"
#include "recording/RecordingLeftovers.h"
#include "recording/ScreenRecorder.h"
#include "recording/ScreenRecorderSelectionView.h"
#include "recording/ScreenRecordingPreviewView.h"
#include "shell/Shell.h"

#include <QGuiApplication>
#include <QScreen>

namespace tavrine {
namespace {

/// The screen as it is, for an overlay that nothing shows through.
QPixmap frozenScreen(const Screens &screens) {
    if (look::Look::composites())
        return {};
    const auto screen =
        QGuiApplication::screenAt(screens.toolkitRect({screens.mouseLocation(), QSizeF(0, 0)}).topLeft().toPoint());
    return screen ? screen->grabWindow(0) : QPixmap();
}

ScreenRecorder::Content stopBar(ScreenRecorder &recorder) {
    auto *bar = new FloatingStopBarView(recorder);
    QObject::connect(bar, &FloatingStopBarView::fittingSizeChanged, &recorder,
                     [&recorder](const QSize &size) { recorder.fitStopBar(size); });
    return {bar, bar->sizeHint()};
}

ScreenRecorder::Content finishing() {
    auto *sign = new FinishingView;
    return {sign, sign->sizeHint()};
}

} // namespace

ScreenRecorderTool::ScreenRecorderTool(Shell &shell, TakenCorner &corner) : m_shell(shell), m_corner(corner) {
    shell.setClearSelectionWindow([this] {
        if (ScreenRecorder *recorder = m_recorder.ifMade())
            recorder->clearSelectionWindow();
    });
}

ScreenRecorderTool::~ScreenRecorderTool() {
    m_shell.setClearSelectionWindow({});
}

void ScreenRecorderTool::launch(bool isOn) {
    if (isOn)
        showLeftovers();
}

/// Once: what comes later into their folder is this run's own.
void ScreenRecorderTool::showLeftovers() {
    if (std::exchange(m_hasLooked, true))
        return;
    const QStringList left = recordingLeftovers(m_shell.desktop().folders().temporary);
    if (left.isEmpty())
        return;
    m_shell.time().asyncAfter(untilLeftoversAreShown, [this, alive = std::weak_ptr(m_alive), left] {
        if (!alive.expired())
            recorder().offer(left);
    });
}

void ScreenRecorderTool::setOn(bool isOn) {
    ScreenRecorder *const recorder = m_recorder.ifMade();
    if (recorder && isOn)
        recorder->offer({}); // what it had not shown yet
    else if (recorder)
        recorder->unload();
    if (isOn)
        showLeftovers();
}

void ScreenRecorderTool::open(Trigger /*trigger*/) {
    startScreenRecording();
}

void ScreenRecorderTool::startScreenRecording() {
    recorder().startScreenRecording();
}

ScreenRecorder &ScreenRecorderTool::recorder() {
    return m_recorder.get([this] { return makeRecorder(); });
}

std::unique_ptr<ScreenRecorder> ScreenRecorderTool::makeRecorder() {
    Desktop &desktop = m_shell.desktop();
    Time &time = m_shell.time();
    Screens &screens = desktop.screens();
    PanelWindows &windows = m_shell.panelWindows();
    return std::make_unique<ScreenRecorder>(
        ScreenRecorder::Ports{
            .selection = {time, desktop.access(), screens, windows, desktop.eventMonitors()},
            .engine = {desktop.screenStreams(), desktop.microphoneSessions(), desktop.movieWriters(), time},
            .preview = {time, screens, windows, desktop.movieAsset(), desktop.moviePlayers(), desktop.filePanels(),
                        desktop.pasteboard(), desktop.folders(), m_corner}},
        ScreenRecorder::Actions{
            .isEnabled = [this] { return m_shell.flags().isOn(Feature::screenRecorder); },
            .mayCaptureScreen = [this] { return m_shell.windowManager().mayRecordScreen(); },
            .activateApplication = [this] { m_shell.activateApplication(); },
            .showMicrophoneAlert = [this] { m_shell.windowManager().showMicrophoneAlert(); },
            .showToast = [this](const QString &message, const QString &icon) { m_shell.showToast(message, icon); }},
        RecordingPreview::Saving{
            .quickShotsDirectory = [this] { return m_shell.clipboardManager().quickShotsDirectory(); },
            .customSaveDirectoryPath = [this] { return preference::customSaveDirectoryPath.get(m_shell.defaults()); },
            .setCustomSaveDirectoryPath =
                [this](const QString &folder) { preference::customSaveDirectoryPath.set(m_shell.defaults(), folder); },
            .saveRecording =
                [this](const QString &path, const QString &name, RecordingPreview::Saving::Then then) {
                    m_shell.clipboardManager().saveRecording(path, name, std::move(then));
                }},
        ScreenRecorder::Views{
            .selection =
                [&screens](const auto &model) { return new ScreenRecorderSelectionView(model, frozenScreen(screens)); },
            .border = [](const QRectF &area,
                         const Screen &screen) { return new RecordingBorderView(area, screen.frame.height()); },
            .stopBar = stopBar,
            .finishing = finishing,
            .countdown = [](const auto &model) { return new CountdownOverlayView(model); },
            .preview = [](const auto &model) { return new ScreenRecordingPreviewView(model); }});
}

} // namespace tavrine
