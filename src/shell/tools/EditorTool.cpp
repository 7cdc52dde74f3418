#include "shell/tools/EditorTool.h"

#include "base/Print.h"
#include "base/Time.h"
#include "capture/editor/EditorScans.h"
#include "capture/reading/Reading.h"
#include "ports/Folders.h"
#include "ports/Screens.h"
#include "shell/Shell.h"
#include "shell/tools/EditorWindow.h"
#include "upload/Uploads.h"

namespace tavrine {
namespace {

constexpr Seconds detachedCloseDelay{0.1};
constexpr auto editorKind = LargeWindows::Kind::editor;

void debug(const char *text) {
    printLine(QStringLiteral("DEBUG: ") + QLatin1String(text));
}

} // namespace

EditorTool::EditorTool(Shell &shell)
    : m_shell(shell), m_flow({shell.time(), shell.desktop().application(),
                              [&shell]() -> Screens & { return shell.desktop().screens(); }},
                             windows()) {}

void EditorTool::setOn(bool isOn) {
    if (!isOn)
        m_shell.time().async(this, [this] { unload(); });
}

void EditorTool::unload() {
    debug("TavrineEditor unloading module and purging memory/CPU resources.");
    LargeWindows &windows = m_shell.largeWindows();
    if (windows.window(editorKind)) {
        windows.close(editorKind);
        windows.restoreAccessoryPolicy();
    }
}

void EditorTool::openEditorForItem(const ClipboardItem &item) {
    if (item.imageFileName)
        m_flow.openEditorForItem(*item.imageFileName);
}

EditorFlow::Windows EditorTool::windows() {
    LargeWindows &windows = m_shell.largeWindows();
    return {.hasWindow = [&windows] { return windows.window(editorKind) != nullptr; },
            .closeWindow = [&windows] { windows.close(editorKind); },
            .makeWindow = [this](const EditorFlow::Window &window) { makeWindow(window); },
            .bringWindowForward = [&windows] { windows.bringForward(editorKind); },
            .activateApplication = [&windows] { windows.activateApplication(); },
            .loadImage = [this](const QString &fileName) { return m_shell.clipboardManager().loadImage(fileName); }};
}

void EditorTool::makeWindow(const EditorFlow::Window &window) {
    Desktop &desktop = m_shell.desktop();
    const EditorWindowParts parts{
        .ports = {desktop.time(), desktop.pasteboard(), desktop.filePanels(), desktop.imageCoder(), m_shell.center(),
                  desktop.folders().documents, m_fileQueue},
        .clipboardManager = m_shell.clipboardManager(),
        .hooks = hooks(),
        .toolkitRect = [&desktop](const QRectF &rect) { return desktop.screens().toolkitRect(rect); }};
    m_shell.largeWindows().keep(editorKind,
                                makeEditorWindow(window, parts, [this] { m_shell.largeWindows().close(editorKind); }));
}

EditorView::Hooks EditorTool::hooks() {
    const auto scans = [this] {
        Desktop &desktop = m_shell.desktop();
        Reading &reading = m_shell.reading();
        return EditorScans::Ports{
            .scans = {reading.manager(), desktop.pictureCodeDetector(), reading.detectionQueue(), desktop.time()},
            .pasteboard = desktop.pasteboard(),
            .urlOpener = desktop.urlOpener()};
    };
    return {.opened =
                [this](EditorView &editor) {
                    editor.model().setUploadButton(m_shell.uploads().makeButton(
                        [&editor] { return editor.model().flattenedImage(); }, UploadButton::AfterLink::returnToIdle));
                },
            .extractText = [scans](EditorView &editor) { EditorScans::extractText(scans())(editor); },
            .scanQr = [scans](EditorView &editor) { EditorScans::scanQr(scans())(editor); }};
}

void EditorTool::tearDownWindow() {
    LargeWindows &windows = m_shell.largeWindows();
    if (!windows.window(editorKind)) {
        debug("AppDelegate - No editor window found to close.");
        return;
    }
    debug("AppDelegate - Safely tearing down editor window...");
    windows.window(editorKind)->hide();
    windows.restoreAccessoryPolicy();
    m_shell.time().asyncAfter(detachedCloseDelay, this, [detached = windows.detach(editorKind)] {
        debug("AppDelegate - Closing detached window...");
        if (detached)
            detached->close();
        debug("AppDelegate - Editor window closed.");
    });
}

} // namespace tavrine
