#pragma once

#include "base/SerialQueue.h"
#include "capture/editor/EditorFlow.h"
#include "capture/editor/EditorView.h"
#include "shell/tools/Tool.h"

namespace tavrine {

class Shell;
struct ClipboardItem;

/// The editor: its one window, and what its buttons lead to.
class EditorTool final : public QObject, public Tool {
public:
    explicit EditorTool(Shell &shell);

    /// Off takes the window away, one more turn later.
    void setOn(bool isOn) override;

    // Ways in. None of them looks at the switch: who calls has.
    void openTavrineEditor(const std::optional<QImage> &image) { m_flow.openTavrineEditor(image); }
    void openEditorDirectly(const QImage &image) { m_flow.openEditorDirectly(image); }
    void openEditorForItem(const ClipboardItem &item);

    /// Takes the window off the screen at once and closes it a little later, so that it is in no picture of the screen.
    void tearDownWindow();

private:
    [[nodiscard]] EditorFlow::Windows windows();
    [[nodiscard]] EditorView::Hooks hooks();
    void makeWindow(const EditorFlow::Window &window);
    void unload();

    Shell &m_shell;
    SerialQueue m_fileQueue{QStringLiteral("com.tavrine.editor")};
    EditorFlow m_flow;
};

} // namespace tavrine
