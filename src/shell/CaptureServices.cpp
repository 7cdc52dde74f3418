#include "shell/CaptureServices.h"

#include "base/Time.h"
#include "capture/editor/EditorScans.h"
#include "capture/reading/OCRNotepadView.h"
#include "capture/reading/QRResultView.h"
#include "ports/CodeDetector.h"
#include "ports/PanelWindow.h"
#include "ports/Recognizer.h"
#include "upload/Uploads.h"

#include <QApplication>

#include <algorithm>

namespace tavrine {

/// What reads pictures: queues of its own, since a recognition takes seconds and a scan must not wait for it.
struct CaptureServices::Reading {
    explicit Reading(const Ports &ports)
        : manager(ports.recognizer, recognitionQueue, ports.time), editor{.scans = {manager, ports.pictureDetector,
                                                                                    detectionQueue, ports.time},
                                                                          .pasteboard = ports.pasteboard,
                                                                          .urlOpener = ports.urlOpener} {}

    SerialQueue recognitionQueue{QStringLiteral("com.tavrine.ocr")};
    SerialQueue detectionQueue{QStringLiteral("com.tavrine.qr")};
    OCRManager manager;
    EditorScans::Ports editor;
};

struct CaptureServices::Notepad {
    PanelAnimator animator;
    std::function<void(const QImage &)> autoSaveSnip;
    OCRNotepadFlow flow;

    Notepad(const PanelController::Ports &desktop, const Ports &ports, OCRManager &manager)
        : animator(desktop.windows, desktop.time),
          flow({desktop.windows, desktop.screens, desktop.monitors, manager},
               {.makeView =
                    [&ports](OCRNotepadState &state, const auto &onDismiss) {
                        return new OCRNotepadView(state, ports.pasteboard, ports.time, onDismiss);
                    },
                .fade =
                    [this](PanelWindow &panel, double alpha, Seconds length, const auto &done) {
                        animator.run(panel, length, TimingFunction::easeIn, {.alpha = alpha, .frame = {}}, done);
                    },
                .autoSaveSnip =
                    [this](const QImage &image) {
                        if (autoSaveSnip)
                            autoSaveSnip(image);
                    }}) {}
};

CaptureServices::CaptureServices(Ports ports) : m_ports(std::move(ports)) {}

CaptureServices::~CaptureServices() {
    // The queues wait for what was handed in, and a picture can take its reader a minute.
    for (CodeDetector *detector : {&m_ports.screenDetector, &m_ports.pictureDetector})
        detector->cancel();
    m_ports.recognizer.cancel();
}

void CaptureServices::setShowToast(const ShowToast &showToast) {
    m_showToast = showToast;
    m_ports.uploads.setShowToast(showToast);
}

CaptureServices::Reading &CaptureServices::reading() {
    if (!m_reading)
        m_reading = std::make_unique<Reading>(m_ports);
    return *m_reading;
}

EditorView::Hooks CaptureServices::editorHooks() {
    return {.opened =
                [this](EditorView &editor) {
                    editor.model().setUploadButton(m_ports.uploads.makeButton(
                        [&editor] { return editor.model().flattenedImage(); }, UploadButton::AfterLink::returnToIdle));
                },
            .extractText = [this](EditorView &editor) { EditorScans::extractText(reading().editor)(editor); },
            .scanQr = [this](EditorView &editor) { EditorScans::scanQr(reading().editor)(editor); }};
}

void CaptureServices::getTextFromSnip(const QImage &image, const PanelController::Ports &desktop,
                                      std::function<void(const QImage &)> autoSaveSnip) {
    if (!m_notepad)
        m_notepad = std::make_unique<Notepad>(desktop, m_ports, reading().manager);
    m_notepad->autoSaveSnip = std::move(autoSaveSnip);
    m_notepad->flow.getTextFromSnip(image);
}

void CaptureServices::startQrScan(const PanelController::Ports &desktop) {
    if (!m_scanner)
        m_scanner = std::make_unique<QRScanner>(
            QRScanner::Ports{.launcher = m_ports.launcher,
                             .detector = m_ports.screenDetector,
                             .detectionQueue = reading().detectionQueue,
                             .windows = desktop.windows,
                             .screens = desktop.screens,
                             .application = m_ports.application,
                             .activator = desktop.activator,
                             .time = m_ports.time,
                             .temporaryFolder = m_ports.temporaryFolder},
            QRScanner::Actions{.makeView =
                                   [this](const QStringList &codes, const auto &onDismiss) {
                                       auto *view = new QRResultView(
                                           codes, {m_ports.pasteboard, m_ports.urlOpener, m_ports.time}, onDismiss);
                                       return QRScanner::Content{.view = view, .fittingSize = view->sizeHint()};
                                   },
                               .hasOtherVisibleWindow =
                                   [] {
                                       const QWidgetList windows = QApplication::topLevelWidgets();
                                       return std::any_of(windows.begin(), windows.end(), [](const QWidget *window) {
                                           return window->isVisible() &&
                                                  (window->windowFlags() & Qt::WindowType_Mask) == Qt::Window;
                                       });
                                   }});
    m_scanner->startScan();
}

void CaptureServices::pickColor() {
    if (!m_picker)
        m_picker = std::make_unique<ColorPickerManager>(
            ColorPickerManager::Ports{m_ports.time, m_ports.defaults, m_ports.pasteboard, m_ports.samplers},
            [this](const QString &message, const QString &icon) { m_showToast(message, icon); });
    m_picker->pickColor();
}

} // namespace tavrine
