#include "look/EmptyState.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QPainter>

#include <cmath>

namespace tavrine::look {

EmptyState::EmptyState(const QString &symbol, const QString &title, const QString &note, QWidget *parent)
    : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setRole(*this, QAccessible::StaticText);
    set(symbol, title, note);
}

void EmptyState::set(const QString &symbol, const QString &title, const QString &note) {
    m_symbol = symbol;
    m_title = inDesktopWords(title);
    m_note = inDesktopWords(note);
    setAccessibleName(m_title);
    setAccessibleDescription(m_note);
    update();
}

void EmptyState::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    const qreal words = m_note.isEmpty() ? 24 : 44;
    // A little above the middle: there the eye expects it.
    const qreal top = std::round((height() - symbolsize::huge - space::medium - words) * 0.46);
    paintSymbol(painter, QRectF(0, top, width(), symbolsize::huge), m_symbol, symbolsize::huge, theme.tertiaryText);
    const QRectF line(space::large, top + symbolsize::huge + space::medium, width() - 2 * space::large, 24);
    paintLine(painter, line, m_title, TextRole::heading, theme.secondaryText, Qt::AlignHCenter);
    if (!m_note.isEmpty())
        paintLine(painter, line.translated(0, 22), m_note, TextRole::callout, theme.secondaryText, Qt::AlignHCenter);
}

} // namespace tavrine::look
