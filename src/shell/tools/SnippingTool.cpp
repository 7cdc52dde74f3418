#include "shell/tools/SnippingTool.h"

#include "capture/CaptureLeftovers.h"
#include "capture/SnipFlow.h"
#include "capture/SnipSaveDialogView.h"
#include "capture/SnippetPreviewCard.h"
#include "capture/reading/OCRNotepadFlow.h"
#include "capture/reading/OCRNotepadView.h"
#include "capture/reading/QRResultView.h"
#include "capture/reading/QRScanner.h"
#include "capture/reading/Reading.h"
#include "ports/Folders.h"
#include "shell/Shell.h"
#include "shell/tools/EditorTool.h"
#include "upload/Uploads.h"

namespace tavrine {
struct SnippingTool::Notepad {
    OCRNotepadFlow flow;

    Notepad(Shell &shell, std::function<void(const QImage &)> autoSaveSnip)
        : flow({shell.panelWindows(), shell.desktop().screens(), shell.desktop().eventMonitors(),
                shell.desktop().workspace(), shell.time(), shell.reading().manager()},
               {.makeView =
                    [&shell](OCRNotepadState &state, const auto &onDismiss) {
                        return new OCRNotepadView(state, shell.desktop().pasteboard(), shell.time(), onDismiss);
                    },
                .autoSaveSnip = std::move(autoSaveSnip)}) {}
};

SnippingTool::SnippingTool(Shell &shell, EditorTool &editor, TakenCorner &corner)
    : m_shell(shell), m_editor(editor), m_corner(corner),
      m_snipper({shell.desktop().taskLauncher(), shell.defaults(), shell.time(), shell.desktop().folders().temporary}),
      m_clearedScreen(shell.time()) {}

SnippingTool::~SnippingTool() = default;

void SnippingTool::launch(bool /*isOn*/) {
    removeCaptureLeftovers(m_shell.desktop().folders().temporary, m_shell.time());
    m_snipper.setOnSnipComplete([this](const QImage &image) { flow().presentSnip(image); });
}

/// Between captures nothing is held, and a card that stands is the person's.
void SnippingTool::setOn(bool /*isOn*/) {}

void SnippingTool::open(Trigger /*trigger*/) {
    startCapture();
}

void SnippingTool::startSnip() {
    if (m_shell.flags().isOn(Feature::snippingTool))
        flow().startSnip();
}

void SnippingTool::startCapture() {
    if (SnipFlow *flow = m_flow.ifMade())
        flow->startCapture(); // its card may be in the way
    else
        m_snipper.startCapture();
}

void SnippingTool::giveCardKeyboard() {
    if (SnipFlow *flow = m_flow.ifMade())
        flow->giveCardKeyboard();
}

void SnippingTool::showPreviewCard(const ClipboardItem &item) {
    if (!item.imageFileName)
        return;
    if (const auto image = m_shell.clipboardManager().loadImage(*item.imageFileName))
        flow().showSnipPreview(*image);
}

SnipFlow &SnippingTool::flow() {
    return m_flow.get([this] { return makeFlow(); });
}

std::unique_ptr<SnipFlow> SnippingTool::makeFlow() {
    Desktop &desktop = m_shell.desktop();
    return std::make_unique<SnipFlow>(
        SnipFlow::Ports{.time = desktop.time(),
                        .defaults = m_shell.defaults(),
                        .pasteboard = desktop.pasteboard(),
                        .screens = desktop.screens(),
                        .windows = m_shell.panelWindows(),
                        .filePanels = desktop.filePanels(),
                        .snipper = m_snipper,
                        .screen = m_clearedScreen,
                        .fileQueue = m_fileQueue,
                        .folders = desktop.folders(),
                        .uploads = m_shell.uploads(),
                        .corner = m_corner},
        SnipFlow::Actions{
            .mayCaptureScreen = [this] { return m_shell.windowManager().mayCaptureScreen(); },
            .saveImage = [this](const QImage &image) { return m_shell.clipboardManager().saveImage(image); },
            .activateApplication = [this] { m_shell.activateApplication(); },
            .openEditorDirectly = [this](const QImage &image) { m_editor.openEditorDirectly(image); },
            .getTextFromSnip = [this](const QImage &image) { getTextFromSnip(image); },
            .showToast = [this](const QString &message, const QString &icon) { m_shell.showToast(message, icon); }},
        SnipFlow::Views{.card = [](const auto &model) { return new SnippetPreviewCard(model); },
                        .saveDialog = [](const auto &model) { return new SnipSaveDialogView(model); }});
}

void SnippingTool::getTextFromSnip(const QImage &image) {
    m_notepad
        .get([this] {
            return std::make_unique<Notepad>(m_shell, [this](const QImage &read) { flow().autoSaveSnip(read); });
        })
        .flow.getTextFromSnip(image);
}

void SnippingTool::startQrScan() {
    m_scanner.get([this] { return makeScanner(); }).startScan();
}

std::unique_ptr<QRScanner> SnippingTool::makeScanner() {
    Desktop &desktop = m_shell.desktop();
    return std::make_unique<QRScanner>(
        QRScanner::Ports{.launcher = desktop.taskLauncher(),
                         .detector = desktop.screenCodeDetector(),
                         .detectionQueue = m_shell.reading().detectionQueue(),
                         .windows = m_shell.panelWindows(),
                         .screens = desktop.screens(),
                         .application = desktop.application(),
                         .activator = desktop.applicationActivator(),
                         .screen = m_clearedScreen,
                         .time = desktop.time(),
                         .temporaryFolder = desktop.folders().temporary},
        QRScanner::Actions{.makeView =
                               [&desktop](const QStringList &codes, const auto &onDismiss) {
                                   auto *view = new QRResultView(
                                       codes, {desktop.pasteboard(), desktop.urlOpener(), desktop.time()}, onDismiss);
                                   return QRScanner::Content{.view = view, .fittingSize = view->sizeHint()};
                               },
                           .hasOtherVisibleWindow = [this] { return m_shell.largeWindows().isAnyVisible(); }});
}

} // namespace tavrine
