#pragma once

#include <QPointF>
#include <QWidget>

namespace tavrine {

class EditorModel;

/// Lies over the picture in crop mode: darkens what would be cut off, says how it is used, and turns drags into the
/// model's selection. Without a pointer the first arrow key selects the middle of the picture; then arrow keys move the
/// selection by one of its pixels, with Shift its lower right corner, ten at a time with Ctrl. Belongs to the stage;
/// lives on the main thread.
class CropOverlayView : public QWidget {
    Q_OBJECT

public:
    /// The model outlives the view.
    explicit CropOverlayView(EditorModel &model, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void refresh();
    [[nodiscard]] QString sizeText() const;
    void paintHint(QPainter &painter);
    void paintSize(QPainter &painter, const QRectF &selected);

    EditorModel &m_model;
    QPointF m_from;
    bool m_isDragging = false;
};

} // namespace tavrine
