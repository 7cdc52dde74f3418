#include "look/Button.h"

#include "base/DesktopWords.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QPainter>

#include <cmath>

namespace tavrine::look {
namespace {

constexpr qreal symbolGap = 6;

} // namespace

Button::Button(const QString &text, ButtonStyle style, QWidget *parent) : Control(parent), m_style(style) {
    setText(text);
    setCursor(style == ButtonStyle::link ? Qt::PointingHandCursor : Qt::ArrowCursor);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

Button::Button(const QString &symbol, const QString &toolTip, QWidget *parent)
    : Control(parent), m_style(ButtonStyle::icon), m_symbol(symbol) {
    setToolTip(inDesktopWords(toolTip));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void Button::setText(const QString &text) {
    QAbstractButton::setText(inDesktopWords(text));
}

void Button::setSymbol(const QString &symbol) {
    m_symbol = symbol;
    updateGeometry();
    update();
}

void Button::setButtonSize(ButtonSize size) {
    m_size = size;
    updateGeometry();
    update();
}

void Button::setSymbolColour(const QColor &colour) {
    m_symbolColour = colour;
    update();
}

int Button::controlHeight() const {
    switch (m_size) {
    case ButtonSize::small:
        return 24;
    case ButtonSize::large:
        return 38;
    case ButtonSize::regular:
        break;
    }
    return height::control;
}

QSize Button::sizeHint() const {
    const int tall = controlHeight();
    if (m_style == ButtonStyle::icon)
        return {tall, tall};
    const int padding = m_style == ButtonStyle::link ? 4 : m_size == ButtonSize::large ? 24 : 14;
    const auto role = m_size == ButtonSize::small ? TextRole::callout : TextRole::bodyStrong;
    qreal width = lineWidth(text(), role) + 2 * padding;
    if (!m_symbol.isEmpty())
        width += symbolsize::medium + (text().isEmpty() ? 0 : symbolGap);
    return {int(std::ceil(width)), tall};
}

qreal Button::cornerRadius() const {
    return m_size == ButtonSize::large ? radius::row : radius::control;
}

void Button::paint(QPainter &painter) {
    const Theme &colours = theme();
    const QRectF body = rect();
    const qreal corner = cornerRadius();
    QColor ink = colours.text;
    switch (m_style) {
    case ButtonStyle::plain:
        fillRounded(painter, body, corner, ground(colours.control));
        strokeHairline(painter, body, corner, colours.separator);
        if (m_symbolColour.isValid())
            ink = m_symbolColour;
        break;
    case ButtonStyle::prominent:
        fillRounded(painter, body, corner, ground(colours.accent));
        ink = colours.onAccent;
        break;
    case ButtonStyle::destructive:
        fillRounded(painter, body, corner, ground(colours.control));
        strokeHairline(painter, body, corner, colours.separator);
        ink = colours.dangerText;
        break;
    case ButtonStyle::icon:
        fillRounded(painter, body, corner, ground(Qt::transparent));
        ink = m_symbolColour.isValid() ? m_symbolColour : mixed(colours.secondaryText, colours.text, hoverPart());
        break;
    case ButtonStyle::link:
        ink = colours.accentText;
        break;
    }

    const qreal size =
        m_size == ButtonSize::large && m_style == ButtonStyle::icon ? symbolsize::large : symbolsize::medium;
    if (m_style == ButtonStyle::icon) {
        paintSymbol(painter, body, m_symbol, size, ink);
        return;
    }
    const auto role = m_size == ButtonSize::small ? TextRole::callout : TextRole::bodyStrong;
    const qreal words = lineWidth(text(), role);
    if (m_symbol.isEmpty()) {
        paintLine(painter, body, text(), role, ink, Qt::AlignHCenter);
    } else {
        const qreal gap = text().isEmpty() ? 0 : symbolGap;
        const qreal left = std::round(body.center().x() - (words + gap + symbolsize::medium) / 2);
        paintSymbol(painter, QRectF(left, body.top(), symbolsize::medium, body.height()), m_symbol, symbolsize::medium,
                    ink);
        paintLine(painter, QRectF(left + symbolsize::medium + symbolGap, body.top(), words + 1, body.height()), text(),
                  role, ink);
    }
    if (m_style == ButtonStyle::link && hoverPart() > 0.5) {
        painter.fillRect(QRectF(body.center().x() - words / 2, body.bottom() - 6, words, 1), ink);
    }
}

} // namespace tavrine::look
