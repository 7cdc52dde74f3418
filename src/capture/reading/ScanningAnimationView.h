#pragma once

#include "look/MotionClock.h"

#include <QWidget>

namespace tavrine {

/// A light that goes up and down the picture while it is looked through, within four corners. Takes the clicks, so that
/// nothing is drawn meanwhile. Stands still where nothing may move. Belongs to the layer over the picture; main thread.
class ScanningAnimationView : public QWidget {
    Q_OBJECT

public:
    explicit ScanningAnimationView(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void mousePressEvent(QMouseEvent *) override {}

private:
    look::Motion m_motion;
    double m_part = 0.25; ///< of there and back
};

} // namespace tavrine
