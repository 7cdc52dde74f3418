#include "look/FactRow.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QFontMetrics>
#include <QPainter>

namespace tavrine::look {
namespace {

constexpr int plateSide = 28; // as in the rows with a control
constexpr int textLeft = 2 * space::medium + plateSide;
constexpr int titleHeight = 18;
constexpr int flags = int(Qt::AlignLeft) | int(Qt::AlignTop) | int(Qt::TextWordWrap);

} // namespace

FactRow::FactRow(const QString &symbol, const QString &title, const QString &text, QWidget *parent)
    : QWidget(parent), m_symbol(symbol), m_title(inDesktopWords(title)), m_text(inDesktopWords(text)) {
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setRole(*this, QAccessible::StaticText);
    setAccessibleName(m_title);
    setAccessibleDescription(m_text);
}

int FactRow::heightForWidth(int width) const {
    const QFontMetrics metrics(fontFor(TextRole::caption));
    const QRect text = metrics.boundingRect(QRect(0, 0, width - textLeft - space::medium, 10000), flags, m_text);
    return space::medium + titleHeight + space::hair + text.height() + space::medium;
}

void FactRow::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    paintSymbolPlate(painter, QRectF(space::medium, space::medium, plateSide, plateSide), m_symbol, theme.control,
                     theme.text);
    const int wide = width() - textLeft - space::medium;
    paintLine(painter, QRectF(textLeft, space::medium, wide, titleHeight), m_title, TextRole::body, theme.text);
    painter.setFont(fontFor(TextRole::caption));
    painter.setPen(theme.secondaryText);
    painter.drawText(QRect(textLeft, space::medium + titleHeight + space::hair, wide, height()), flags, m_text);
}

} // namespace tavrine::look
