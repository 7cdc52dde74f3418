#pragma once

#include "look/Metrics.h"

#include <QWidget>

namespace tavrine::look {

/// The window of a panel: a rounded ground with a hairline round it. Where a compositor runs the window is larger than
/// the panel by `panelMargins`, for the shadow; elsewhere it is the panel alone, with masked corners.
///
/// The content gets the panel's rectangle and must leave the corners to the frame.
class PanelFrame : public QWidget {
    Q_OBJECT
public:
    explicit PanelFrame(const QSize &panelSize, qreal cornerRadius = radius::panel, QWidget *parent = nullptr);

    /// Takes the widget over; the former one is deleted. Null leaves the frame empty.
    void setContent(QWidget *content);
    [[nodiscard]] QWidget *content() const { return m_content; }

    [[nodiscard]] QSize panelSize() const { return m_panelSize; }
    void setPanelSize(const QSize &size);
    /// The room round the panel within the window.
    [[nodiscard]] QMargins panelMargins() const;
    /// The panel's place on the desktop.
    [[nodiscard]] QRect panelGeometry() const;
    void movePanel(const QPoint &topLeft);

    /// A panel that a person can drag by its ground.
    void setMovableByBackground(bool isMovable);
    /// A ground of its own; none: the theme's surface.
    void setGround(const QColor &colour);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    void adopt();
    void fit();

    QSize m_panelSize;
    qreal m_radius;
    QWidget *m_content = nullptr;
    QColor m_ground;
    bool m_isComposited = false;
    bool m_isMovable = false;
};

} // namespace tavrine::look
