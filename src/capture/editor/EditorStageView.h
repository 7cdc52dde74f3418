#pragma once

#include "capture/editor/ImageZoom.h"
#include "capture/editor/PictureLevels.h"

#include <QPixmap>
#include <QPointer>
#include <QWidget>

namespace tavrine {

/// The place of the picture in the editor: the picture on its ground, and whatever lies exactly over it. Zooms and
/// moves by wheel, pinch and middle button; all that lies over the picture goes along.
///
/// Belongs to the editor's view; lives on the main thread. What is painted of the picture is kept as it stands, so that
/// a stroke over it costs a copy of pixels and no scaling.
class EditorStageView : public QWidget {
    Q_OBJECT

public:
    explicit EditorStageView(QWidget *parent = nullptr);
    ~EditorStageView() override;

    /// Another picture, shown whole.
    void setImage(const QImage &image);
    [[nodiscard]] const PictureLevels &image() const { return m_image; }
    /// The same picture with other pixels, until there is another canvas; it stays where it stands.
    void setPicture(const QImage &picture);
    /// Takes the widget over and lays it over the picture, below the overlay layer; the former one is deleted. A canvas
    /// may paint the picture itself.
    enum class Picture { byStage, byCanvas };
    void setCanvas(QWidget *canvas, Picture picture);
    /// The layer over the picture, above the canvas, always as large as the picture is shown. Clicks beside its
    /// children go to what is below; its children go when the picture is replaced.
    [[nodiscard]] QWidget *overlayLayer() const { return m_overlay; }
    void clearOverlay();

    [[nodiscard]] QRect imageRect() const { return m_zoom.imageRect().toRect(); }
    [[nodiscard]] double scale() const { return m_zoom.scale(); }
    [[nodiscard]] bool isFit() const { return m_zoom.isFit(); }
    void zoomToFit();
    void zoomToFullSize();
    void zoomIn();
    void zoomOut();

Q_SIGNALS:
    void zoomChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;
    bool event(QEvent *event) override;

private:
    [[nodiscard]] bool movesPicture(QEvent *event);
    [[nodiscard]] QPointF middle() const { return {width() / 2.0, height() / 2.0}; }
    void place();
    void renderBackdrop();
    void paintImage(QPainter &painter, const QRectF &target);

    ImageZoom m_zoom;
    PictureLevels m_image;
    PictureLevels m_shown; ///< by the stage itself
    QPixmap m_backdrop;
    QWidget *m_canvas = nullptr;
    Picture m_picture = Picture::byStage;
    QWidget *m_overlay;
    QPointF m_dragFrom;
    bool m_isDragging = false;
};

} // namespace tavrine
