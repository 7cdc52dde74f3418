#pragma once

#include "capture/reading/OCRNotepadState.h"
#include "panels/Departure.h"
#include "panels/FloatingPanel.h"
#include "ports/EventMonitors.h"

#include <QImage>

#include <functional>
#include <memory>

class QWidget;

namespace tavrine {

class OCRManager;

/// The notepad that shows the text of a capture: opens it, follows clicks elsewhere, and closes it. There is one at
/// most. Lives on the main thread, as long as the process.
///
/// Every way of closing (Escape, a click elsewhere, a way to another program, the button, the next notepad) runs the
/// closing action, which saves the capture.
class OCRNotepadFlow {
public:
    static constexpr double width = 440;
    static constexpr double height = 320;
    static constexpr Seconds fadeIn{0.15};
    static constexpr Seconds fadeOut{0.16};

    /// All of them outlive the flow.
    struct Ports {
        PanelWindows &windows;
        Screens &screens;
        EventMonitors &monitors;
        Workspace &workspace;
        Time &time;
        OCRManager &manager;
    };
    struct Actions {
        /// The view of one recognition, which calls `onDismiss` for its button and for Escape.
        std::function<QWidget *(OCRNotepadState &state, std::function<void()> onDismiss)> makeView;
        std::function<void(const QImage &image)> autoSaveSnip;
    };

    OCRNotepadFlow(const Ports &ports, Actions actions);
    ~OCRNotepadFlow();
    OCRNotepadFlow(const OCRNotepadFlow &) = delete;
    OCRNotepadFlow &operator=(const OCRNotepadFlow &) = delete;

    /// "Get Text" of the preview card.
    void getTextFromSnip(const QImage &image);
    void showOCRNotepad(std::shared_ptr<OCRNotepadState> state, std::function<void()> closeAction);
    void closeOCRNotepad();

    /// Null while none is open.
    [[nodiscard]] PanelWindow *ocrNotepadWindow() const { return m_panel.window(); }

private:
    void clicked();

    Ports m_ports;
    Actions m_actions;
    std::shared_ptr<OCRNotepadState> m_state;
    FloatingPanel m_panel;
    Departure m_departure;
    std::function<void()> m_closeAction;
    std::unique_ptr<EventMonitor> m_clickMonitor;
};

} // namespace tavrine
