#pragma once

#include "recording/OverlayWindow.h"
#include "recording/RecordingArea.h"
#include "recording/ScreenRecorderSelectionModel.h"

namespace tavrine {

class Access;
class EventMonitor;
class EventMonitors;

/// The overlay on which a recording is set up, and what the permission for the microphone has to do with it. Belongs to
/// the recorder; main thread.
///
/// The switch "System" is no source of its own: either switch turns on the one sound there is, the microphone. A
/// microphone that is refused never starts a recording without sound.
class RecordingSelection final : public QObject {
    Q_OBJECT

public:
    /// All outlive it.
    struct Ports {
        Time &time;
        Access &access;
        Screens &screens;
        PanelWindows &windows;
        EventMonitors &monitors;
    };
    struct Actions {
        std::function<void()> startScreenRecording; ///< the whole flow, from its beginning
        std::function<void()> showMicrophoneAlert;
        std::function<void(const RecordingArea &area, int delaySeconds)> onSelect;
        std::function<void()> onCancelled;
        std::function<bool()> isRecording;
        std::function<void()> stopRecording;
    };
    using View = std::function<QWidget *(std::shared_ptr<ScreenRecorderSelectionModel>)>;

    RecordingSelection(const Ports &ports, Actions actions, View view);
    ~RecordingSelection() override;

    /// On the whole of the screen, with the keyboard. One that is open already is replaced.
    void open(const Screen &screen);
    /// Takes the overlay off the screen and drops it.
    void clear();

    /// Null while none is open.
    [[nodiscard]] PanelWindow *window() const { return m_window.window(); }
    [[nodiscard]] ScreenRecorderSelectionModel *model() const { return m_model.get(); }

private:
    [[nodiscard]] bool swallowsKey(int keyCode);
    void cancel();
    void stopRecording();
    void pressMic();
    void start();
    void startAnswered(const std::weak_ptr<ScreenRecorderSelectionModel> &asked, bool isGranted);
    void select(bool includeAudio);
    void alertSoon();
    void keepOnScreen();

    Ports m_ports;
    Actions m_actions;
    View m_view;
    Screen m_screen;
    std::shared_ptr<ScreenRecorderSelectionModel> m_model;
    std::unique_ptr<EventMonitor> m_escKeyMonitor;
    std::shared_ptr<void> m_screenChanges;
    OverlayWindow m_window;
};

} // namespace tavrine
