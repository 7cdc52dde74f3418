#pragma once

#include "look/Control.h"

namespace tavrine::look {

/// A switch that is on or off. `setChecked` from outside moves it as a click does.
class Toggle : public Control {
    Q_OBJECT
public:
    explicit Toggle(QWidget *parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paint(QPainter &painter) override;
    [[nodiscard]] QRectF body() const override;
    [[nodiscard]] qreal cornerRadius() const override;

private:
    Motion m_motion;
    double m_place = 0; // of the knob, from off to on
};

} // namespace tavrine::look
