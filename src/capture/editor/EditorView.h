#pragma once

#include "capture/editor/EditorModel.h"

#include <QPointer>
#include <QWidget>

namespace tavrine {

class DrawView;
class EditorStageView;
class EditorToolbarView;
class PillView;

/// The editor of one picture: its bars, the picture with the canvas over it, and what floats above. It paints its model
/// and hands it keys and clicks; what they do is the model's.
///
/// Belongs to the editor's window; lives on the main thread. Text recognition, code scanning and uploads are lent to
/// it.
class EditorView : public QWidget {
    Q_OBJECT

public:
    /// What is lent to the view; each is called with the view that it is for.
    struct Hooks {
        std::function<void(EditorView &)> opened; ///< once, when the view is made: to give its model an upload button
        std::function<void(EditorView &)> extractText;
        std::function<void(EditorView &)> scanQr;
    };
    struct Actions {
        std::function<void(const QImage &)> openNewImage; ///< may be empty: no other file can be opened then
        std::function<void()> close;
    };

    EditorView(const QImage &image, const EditorModel::Ports &ports, Actions actions, const Hooks &hooks,
               QWidget *parent = nullptr);
    ~EditorView() override;

    [[nodiscard]] EditorModel &model() { return m_model; }

    /// Darkens the picture and says what is under way; an empty text takes it away. The picture takes no clicks
    /// meanwhile.
    void setScanningOverlay(const QString &text);
    /// The layer that lies exactly over the picture as it is shown, for widgets of others. They go when the picture is
    /// replaced, and see each change of size as their parent's.
    [[nodiscard]] QWidget *overlayLayer() const;
    void clearOverlayLayer();
    /// Shows the widget in the middle of the darkened editor and gives it the keyboard. The view takes it over; the
    /// former one goes.
    void presentSheet(QWidget *sheet);
    void dismissSheet();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void build();
    void replaceCanvas();
    void updateCanvas();
    void showMode();
    void showPills();
    void showSaveFailure();
    void placeFloating();
    void toggleCropping();

    EditorModel m_model;
    EditorStageView *m_stage = nullptr;
    EditorToolbarView *m_toolbar = nullptr;
    PillView *m_cropPill = nullptr;
    PillView *m_unsavedPill = nullptr;
    QPointer<PillView> m_failurePill;
    QPointer<DrawView> m_canvas;
    QPointer<QWidget> m_scanning;
    QPointer<QWidget> m_sheet;
};

} // namespace tavrine
