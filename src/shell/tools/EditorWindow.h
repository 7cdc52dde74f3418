#pragma once

#include "capture/editor/EditorFlow.h"
#include "capture/editor/EditorView.h"

#include <memory>

namespace tavrine {

class ClipboardManager;

/// What the editor's windows are made of. All outlive them.
struct EditorWindowParts {
    EditorModel::Ports ports;
    ClipboardManager &clipboardManager; ///< the recent images, and their thumbnails, are those of the history
    EditorView::Hooks hooks;
    /// A rectangle of `Screens` where the toolkit has it.
    std::function<QRectF(const QRectF &)> toolkitRect;
};

/// The window that the flow asks for, placed and not on the screen yet. `close` comes when the person has finished; the
/// window with all its pictures goes when it is closed.
[[nodiscard]] std::unique_ptr<QWidget>
makeEditorWindow(const EditorFlow::Window &window, const EditorWindowParts &parts, const std::function<void()> &close);

} // namespace tavrine
