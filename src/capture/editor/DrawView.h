#pragma once

#include "capture/editor/AnnotationLayer.h"
#include "capture/editor/CanvasKeys.h"
#include "capture/editor/DrawViewModel.h"
#include "capture/editor/PictureLevels.h"

#include <QLineEdit>
#include <QPointer>
#include <QWidget>

class QTabletEvent;

namespace tavrine {

/// The canvas: shows the picture with its annotations over its whole area, and takes the mouse and the pen. Owned by
/// the editor, which lays it exactly where the picture belongs and makes a new one for a new identity of the canvas.
/// It may be far larger than its parent: only what shows there, and a little round it, is kept as pixels.
///
/// Without a pointer: Return puts what the tool draws into the middle of what shows, and lets it go; Tab goes through
/// the annotations and then on; arrow keys move the one that is selected, with Shift its last point, ten points at a
/// time with Ctrl; Delete removes it, Escape lets it go. The digits from 1 on choose a tool, in the order of their row.
///
/// A view that goes away while something is typed does not finish the typing: its annotation stays as it was.
class DrawView : public QWidget {
    Q_OBJECT
public:
    explicit DrawView(QWidget *parent = nullptr);
    ~DrawView() override;

    /// What lies under the annotations, stretched over the view. Highlighters darken it. Null: nothing, and the view
    /// is clear.
    void setPicture(const PictureLevels &picture);
    /// Replaces what the view is bound to and redraws. Call it whenever a bound value was changed from elsewhere. The
    /// gesture under way and the field being typed into stay.
    void updateCanvas(const DrawingCanvas &canvas);

    [[nodiscard]] const DrawViewModel &model() const { return m_model; }
    /// Ends the typing, as a click elsewhere does: what was typed is kept.
    void commitActiveText() { m_model.commitActiveText(); }
    /// Null while nothing is typed.
    [[nodiscard]] QLineEdit *activeTextField() const { return m_field; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void tabletEvent(QTabletEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void showTextField(const DrawViewModel::TextField &field);
    void moveTextField(const QPointF &origin);
    void removeTextField();
    void showDrawings();
    void redraw(const QRectF &area);
    void setCursorForTool();
    [[nodiscard]] bool handleKey(const QKeyEvent &event);
    [[nodiscard]] bool chooseTool(int key);
    void showSelection();
    void paintSelection(QPainter &painter) const;
    [[nodiscard]] QRectF eraserRing() const;
    void showEraserAt(std::optional<QPointF> place);
    [[nodiscard]] bool isGestureUnderWay() const { return !m_model.currentPoints().empty(); }
    void beginGesture(QPointF place);
    /// The canvas may be far larger than its parent.
    [[nodiscard]] QRect seen() const;
    [[nodiscard]] QRect pixelsSeen() const;
    [[nodiscard]] QImage ground(const QRect &area) const;
    void prepareLayer();
    [[nodiscard]] QImage frameOf(const QRect &pixels, const DrawingPath &gesture) const;

    PictureLevels m_picture;
    AnnotationLayer m_layer;
    DrawViewModel m_model;
    CanvasKeys m_keys{m_model};
    QPointer<QLineEdit> m_field;
    std::optional<QPointF> m_eraser; ///< where the ring of the eraser stands
    bool m_isPenDown = false;
    bool m_isReachedByTab = false; ///< and shows that the keyboard is here
};

} // namespace tavrine
