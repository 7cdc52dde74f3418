#pragma once

#include "look/Control.h"

class QColorDialog;

namespace tavrine::look {

/// A button that is a colour, and asks for another one. Its text is the colour as "#RRGGBB".
class ColorWell : public Control {
    Q_OBJECT
public:
    explicit ColorWell(QWidget *parent = nullptr);

    [[nodiscard]] const QColor &color() const { return m_color; }
    /// Does not emit.
    void setColor(const QColor &color);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    /// A person chose it; also each colour on the way there.
    void chosen(const QColor &color);

protected:
    void paint(QPainter &painter) override;

private:
    void ask();

    QColor m_color;
};

} // namespace tavrine::look
