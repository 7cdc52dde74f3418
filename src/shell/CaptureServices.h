#pragma once

#include "base/SerialQueue.h"
#include "capture/ColorPickerManager.h"
#include "capture/SnipFlow.h"
#include "capture/editor/EditorView.h"
#include "capture/reading/OCRManager.h"
#include "capture/reading/OCRNotepadFlow.h"
#include "capture/reading/QRScanner.h"
#include "panels/PanelAnimator.h"
#include "shell/PanelController.h"

#include <QObject>

#include <functional>
#include <memory>

namespace tavrine {

class CodeDetector;
class Recognizer;
class Uploads;
class UrlOpener;

/// What captures lead to: the text and the codes in a picture, a colour of the screen. One instance, as long as the
/// process; lives on the main thread. Each tool is made when it is first asked for.
class CaptureServices {
public:
    /// All outlive the services, which cancel the three that read pictures at their own end.
    struct Ports {
        Time &time;
        UserDefaults &defaults;
        Pasteboard &pasteboard;
        Application &application;
        UrlOpener &urlOpener;
        TaskLauncher &launcher;
        Recognizer &recognizer;
        CodeDetector &screenDetector;
        CodeDetector &pictureDetector;
        ColorSamplers &samplers;
        QString temporaryFolder;
        Uploads &uploads;
    };
    using ShowToast = std::function<void(const QString &message, const QString &icon)>;

    explicit CaptureServices(Ports ports);
    ~CaptureServices();
    CaptureServices(const CaptureServices &) = delete;
    CaptureServices &operator=(const CaptureServices &) = delete;

    /// Before the first tool is used.
    void setShowToast(const ShowToast &showToast);

    /// What the editor's buttons lead to. The services outlive every editor.
    [[nodiscard]] EditorView::Hooks editorHooks();

    /// Opens the notepad over the desktop; `autoSaveSnip` is called with the picture when it closes.
    void getTextFromSnip(const QImage &image, const PanelController::Ports &desktop,
                         std::function<void(const QImage &)> autoSaveSnip);
    void startQrScan(const PanelController::Ports &desktop);
    void pickColor();

private:
    struct Reading;
    struct Notepad;

    Reading &reading();

    Ports m_ports;
    ShowToast m_showToast;
    std::unique_ptr<Reading> m_reading;
    std::unique_ptr<Notepad> m_notepad;
    std::unique_ptr<QRScanner> m_scanner;
    std::unique_ptr<ColorPickerManager> m_picker;
};

} // namespace tavrine
