#include "look/Text.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QPaintDevice>
#include <QPainter>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrine::look {
namespace {

struct Measure {
    int pixels;
    QFont::Weight weight;
};

// In the order of TextRole.
constexpr std::array<Measure, 10> measures{{
    {28, QFont::Bold},
    {20, QFont::DemiBold},
    {15, QFont::DemiBold},
    {19, QFont::Normal},
    {13, QFont::Normal},
    {13, QFont::Medium},
    {12, QFont::Normal},
    {11, QFont::Normal},
    {11, QFont::DemiBold},
    {10, QFont::Medium},
}};

// Letters narrower than this are no letters; and white space at the start of a text is passed over no further.
constexpr qreal narrowestLetter = 1.0;
constexpr qsizetype longestLead = 4096;
constexpr qsizetype longestLine = 2048;

// The start of the text, at most about `units` long, cut between two letters.
QString start(const QString &text, qsizetype units, bool &isCut) {
    qsizetype first = 0;
    while (first < std::min(text.size(), longestLead) && text.at(first).isSpace())
        ++first;
    isCut = text.size() - first > units;
    if (!isCut)
        return text.mid(first);
    const QString part = text.mid(first, units + 1);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, part);
    finder.setPosition(units);
    qsizetype end = finder.isAtBoundary() ? units : finder.toPreviousBoundary();
    if (end <= 0) // one letter with thousands of marks
        end = part.at(units).isLowSurrogate() ? units - 1 : units;
    return part.left(end);
}

} // namespace

QFont fontFor(TextRole role) {
    // Fonts are shared values: one for each role, made anew when the desktop's family changes.
    static std::array<QFont, measures.size()> fonts;
    static QFont base;
    static bool isFilled = false;
    const QFont desktop = QApplication::font();
    if (!isFilled || desktop != base) {
        base = desktop;
        isFilled = true;
        for (size_t i = 0; i < measures.size(); ++i) {
            fonts[i] = desktop;
            fonts[i].setPixelSize(measures[i].pixels);
            fonts[i].setWeight(measures[i].weight);
        }
    }
    return fonts[size_t(role)];
}

QString oneLine(const QString &text, const QFont &font, qreal width) {
    if (width <= 0)
        return {};
    bool isCut = false;
    const auto units = std::min(longestLine, qsizetype(width / narrowestLetter) + 16);
    QString line = start(text, units, isCut).simplified();
    for (QChar &letter : line) {
        if (letter.category() == QChar::Other_Control)
            letter = u' ';
    }
    const QFontMetricsF metrics(font);
    if (!isCut && metrics.horizontalAdvance(line) <= width)
        return line;
    // Elided even where the cut start fits, since more follows.
    const QString ellipsis(QChar(0x2026));
    if (isCut && metrics.horizontalAdvance(line + ellipsis) <= width)
        return line + ellipsis;
    return metrics.elidedText(line, Qt::ElideRight, width);
}

qreal paintLine(QPainter &painter, const QRectF &rect, const QString &text, TextRole role, const QColor &colour,
                Qt::Alignment alignment) {
    const QFont font = fontFor(role);
    const QFontMetricsF metrics(font);
    const QString line = oneLine(text, font, rect.width());
    const qreal width = metrics.horizontalAdvance(line);
    qreal x = rect.left();
    if (alignment & Qt::AlignRight)
        x = rect.right() - width;
    else if (alignment & Qt::AlignHCenter)
        x = rect.left() + (rect.width() - width) / 2;
    const qreal scale = painter.device()->devicePixelRatioF();
    const auto onGrid = [scale](qreal place) { return std::round(place * scale) / scale; };
    const qreal baseline = rect.top() + (rect.height() + metrics.capHeight()) / 2;
    painter.setFont(font);
    painter.setPen(colour);
    painter.setLayoutDirection(Qt::LayoutDirectionAuto);
    painter.drawText(QPointF(onGrid(x), onGrid(baseline)), line);
    return width;
}

qreal lineWidth(const QString &text, TextRole role) {
    return QFontMetricsF(fontFor(role)).horizontalAdvance(text);
}

} // namespace tavrine::look
