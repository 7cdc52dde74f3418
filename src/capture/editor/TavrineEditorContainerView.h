#pragma once

#include "capture/editor/EditorView.h"
#include "capture/editor/TavrineEditorLandingView.h"

#include <QPointer>
#include <QWidget>

namespace tavrine {

/// The content of the editor's window that begins with the landing page: that page, or the editor of the picture that
/// was selected. A new picture replaces the editor with all that was drawn.
///
/// Belongs to the editor's window; lives on the main thread.
class TavrineEditorContainerView : public QWidget {
    Q_OBJECT

public:
    struct Parts {
        EditorModel::Ports ports;
        EditorView::Hooks hooks;
        EditorLandingModel::History history;
        std::function<void()> close;
    };

    explicit TavrineEditorContainerView(Parts parts, QWidget *parent = nullptr);

    /// Shows the editor of this picture.
    void select(const QImage &image);
    /// To be called when the clipboard's history is another.
    void historyChanged();
    /// To be called when the history's thumbnail of a file is made that could not be made at once.
    void thumbnailArrived(const QString &fileName);

    [[nodiscard]] EditorView *editor() const { return m_editor; }
    [[nodiscard]] TavrineEditorLandingView *landing() const { return m_landing; }

private:
    void place(QWidget *view);

    Parts m_parts;
    QPointer<EditorView> m_editor;
    QPointer<TavrineEditorLandingView> m_landing;
};

} // namespace tavrine
