#pragma once

#include "look/MotionClock.h"

#include <QWidget>

#include <memory>

namespace tavrine {

class CountdownModel;

/// The seconds before a recording, large in the middle of the screen. Fills its window; main thread.
class CountdownOverlayView final : public QWidget {
    Q_OBJECT

public:
    explicit CountdownOverlayView(std::shared_ptr<CountdownModel> model);

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void animate();
    void shapeWindow();
    [[nodiscard]] QRectF disc() const;

    std::shared_ptr<CountdownModel> m_model;
    look::Motion m_motion;
    double m_scale = 0.5;
    double m_opacity = 0;
};

} // namespace tavrine
