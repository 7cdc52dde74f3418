#include "look/WrappedText.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace tavrine::look {
namespace {

constexpr int symbolGap = 8;

QString inLines(QString text) {
    return text.replace(u'\n', QChar::LineSeparator);
}

/// Breaks the text between words, and an address without blanks anywhere. Returns the height.
qreal wrap(QTextLayout &layout, int width) {
    QTextOption option(Qt::AlignLeft);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    qreal height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(std::max(width, 20));
        line.setPosition({0, height});
        height += line.height();
    }
    layout.endLayout();
    return height;
}

} // namespace

WrappedText::WrappedText(const QString &symbol, const QString &text, Tone tone, QWidget *parent) : QWidget(parent) {
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    installAccessibility();
    set(symbol, text, tone);
}

void WrappedText::set(const QString &symbol, const QString &text, Tone tone) {
    m_symbol = symbol;
    m_text = inDesktopWords(text);
    m_tone = tone;
    setAccessibleName(m_text);
    setCursor(isLink() ? Qt::PointingHandCursor : Qt::ArrowCursor);
    setFocusPolicy(isLink() ? Qt::TabFocus : Qt::NoFocus);
    updateGeometry();
    update();
}

void WrappedText::setRole(TextRole role) {
    m_role = role;
    updateGeometry();
    update();
}

int WrappedText::indentation() const {
    return m_symbol.isEmpty() ? 0 : int(symbolsize::medium) + symbolGap;
}

int WrappedText::heightForWidth(int width) const {
    QTextLayout layout(inLines(m_text), fontFor(m_role));
    return std::max(int(std::ceil(wrap(layout, width - indentation()))), int(symbolsize::medium)) + 2;
}

void WrappedText::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    QColor ink = theme.text;
    QColor mark = theme.secondaryText;
    switch (m_tone) {
    case Tone::plain:
        break;
    case Tone::secondary:
        ink = theme.secondaryText;
        break;
    case Tone::warning:
        ink = theme.secondaryText;
        mark = theme.warning;
        break;
    case Tone::danger:
        ink = mark = theme.dangerText;
        break;
    case Tone::link:
        ink = theme.accentText;
        mark = theme.successText;
        break;
    }
    painter.setFont(fontFor(m_role));
    if (!m_symbol.isEmpty()) {
        const int line = painter.fontMetrics().height();
        paintSymbol(painter, QRectF(0, 0, symbolsize::medium, line), m_symbol, symbolsize::medium, mark);
    }
    if (isLink()) {
        QFont underlined = painter.font();
        underlined.setUnderline(true);
        painter.setFont(underlined);
    }
    if (hasFocus())
        paintFocusRing(painter, QRectF(rect()).adjusted(3, 3, -3, -3), radius::badge, theme);
    painter.setPen(ink);
    QTextLayout layout(inLines(m_text), painter.font());
    wrap(layout, width() - indentation());
    layout.draw(&painter, QPointF(indentation(), 0));
}

void WrappedText::mouseReleaseEvent(QMouseEvent *event) {
    if (isLink() && event->button() == Qt::LeftButton && rect().contains(event->pos()))
        Q_EMIT pressed();
}

void WrappedText::keyPressEvent(QKeyEvent *event) {
    const bool isPress =
        event->key() == Qt::Key_Space || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isLink() && isPress)
        Q_EMIT pressed();
    else
        QWidget::keyPressEvent(event);
}

} // namespace tavrine::look
