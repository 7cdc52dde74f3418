#pragma once

#include "look/Metrics.h"

#include <QWidget>

namespace tavrine::look {

/// The content of a panel that fills a clear window: a rounded ground with a hairline round it. Where no compositor
/// runs it masks the corners of its window, which would show as black otherwise.
class PanelSurface : public QWidget {
    Q_OBJECT
public:
    explicit PanelSurface(qreal cornerRadius = radius::panel, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void shapeWindow();

    qreal m_radius;
    QSize m_masked; ///< the size for which the window has its mask
};

} // namespace tavrine::look
