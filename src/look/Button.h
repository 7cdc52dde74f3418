#pragma once

#include "look/Control.h"

namespace tavrine::look {

/// plain: grey; prominent: filled with the accent, the one thing to do; destructive: words in red; icon: a symbol
/// alone; link: words in the accent.
enum class ButtonStyle { plain, prominent, destructive, icon, link };
enum class ButtonSize { small, regular, large };

class Button : public Control {
    Q_OBJECT
public:
    explicit Button(const QString &text, ButtonStyle style = ButtonStyle::plain, QWidget *parent = nullptr);
    /// A button that is a symbol alone; the tool tip is its accessible name too.
    Button(const QString &symbol, const QString &toolTip, QWidget *parent = nullptr);

    void setText(const QString &text);

    void setSymbol(const QString &symbol);
    [[nodiscard]] const QString &symbol() const { return m_symbol; }
    void setButtonSize(ButtonSize size);
    /// A colour of its own for an icon, and for the symbol and words of a plain button; none: the theme's.
    void setSymbolColour(const QColor &colour);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paint(QPainter &painter) override;
    [[nodiscard]] qreal cornerRadius() const override;

private:
    [[nodiscard]] int controlHeight() const;

    ButtonStyle m_style;
    ButtonSize m_size = ButtonSize::regular;
    QString m_symbol;
    QColor m_symbolColour;
};

} // namespace tavrine::look
