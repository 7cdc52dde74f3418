#include "look/Text.h"

#include "look/EmojiGlyphs.h"
#include "look/EmojiText.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QPaintDevice>
#include <QPainter>
#include <QTextBoundaryFinder>
#include <QTextLayout>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

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

constexpr qsizetype lineGlyphBytes = 256 * 1024; // four hundred in a row's title

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

/// A text of nothing but white space as the marks that people know for it.
QString whiteSpaceMarks(const QString &text) {
    QString marks;
    for (const QChar c : text) {
        if (c == u'\t')
            marks += QChar(0x21E5);
        else if (c == u'\n' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator)
            marks += QChar(0x21B5);
        else if (c != u'\r')
            marks += QChar(0x2423);
    }
    return marks;
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

namespace {

/// The line with its emoji taken out, and as much of its text as has room.
struct FittedLine {
    EmojiLine line;
    QString shown;
};

FittedLine fitted(const QString &text, const QFont &font, qreal width) {
    bool isCut = false;
    const auto units = std::min(longestLine, qsizetype(width / narrowestLetter) + 16);
    const QString begin = start(text, units, isCut);
    QString simplified = begin.simplified();
    if (simplified.isEmpty()) {
        simplified = whiteSpaceMarks(text.left(units));
        isCut = text.size() > units;
    }
    for (QChar &letter : simplified) {
        if (letter.category() == QChar::Other_Control)
            letter = u' ';
    }
    const EmojiLine line = emojiLine(simplified);
    const QFontMetricsF metrics(font);
    if (!isCut && metrics.horizontalAdvance(line.text) <= width)
        return {line, line.text};
    // Elided even where the cut start fits, since more follows.
    const QString ellipsis(QChar(0x2026));
    if (isCut && metrics.horizontalAdvance(line.text + ellipsis) <= width)
        return {line, line.text + ellipsis};
    return {line, metrics.elidedText(line.text, Qt::ElideRight, width)};
}

/// Pictures for lines of text, apart for each height of them. Together they take as much as a screen full of them.
EmojiGlyphs &lineGlyphs(int side) {
    static std::map<int, EmojiGlyphs> glyphs;
    return glyphs.try_emplace(side, side, lineGlyphBytes).first->second;
}

/// Paints the emoji of a line that stands at `place`, its baseline's left end.
void paintEmojis(QPainter &painter, const FittedLine &fit, const QFont &font, QPointF place, const QColor &colour) {
    QTextLayout layout(fit.shown, font);
    QTextOption option;
    option.setTextDirection(Qt::LayoutDirectionAuto);
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    const qreal scale = painter.device()->devicePixelRatioF();
    const qreal middle = place.y() - QFontMetricsF(font).capHeight() / 2;
    const int side = int(std::ceil(font.pixelSize() / EmojiGlyphs::glyphPart)); // the ink fills the em
    qsizetype next = 0;
    for (int i = 0; i < fit.shown.size(); ++i) {
        if (fit.shown.at(i) != EmojiLine::place)
            continue;
        const qreal begin = line.cursorToX(i);
        const qreal end = line.cursorToX(i + 1);
        const QString &emoji = fit.line.emojis.at(next++);
        const QPixmap picture = lineGlyphs(side).picture(emoji, colour, scale);
        if (picture.isNull()) { // newer than all fonts
            painter.drawText(QPointF(place.x() + std::min(begin, end), place.y()), emoji);
            continue;
        }
        const QPointF corner(place.x() + (begin + end) / 2 - side / 2.0, middle - side / 2.0);
        painter.drawPixmap(QPointF(std::round(corner.x() * scale) / scale, std::round(corner.y() * scale) / scale),
                           picture);
    }
}

} // namespace

QString oneLine(const QString &text, const QFont &font, qreal width) {
    if (width <= 0)
        return {};
    const FittedLine fit = fitted(text, font, width);
    return fit.line.whole(fit.shown);
}

qreal paintLine(QPainter &painter, const QRectF &rect, const QString &text, TextRole role, const QColor &colour,
                Qt::Alignment alignment) {
    if (rect.width() <= 0)
        return 0;
    const QFont font = fontFor(role);
    const QFontMetricsF metrics(font);
    const FittedLine fit = fitted(text, font, rect.width());
    const qreal width = metrics.horizontalAdvance(fit.shown);
    qreal x = rect.left();
    if (alignment & Qt::AlignRight)
        x = rect.right() - width;
    else if (alignment & Qt::AlignHCenter)
        x = rect.left() + (rect.width() - width) / 2;
    const qreal scale = painter.device()->devicePixelRatioF();
    const auto onGrid = [scale](qreal place) { return std::round(place * scale) / scale; };
    const QPointF place(onGrid(x), onGrid(rect.top() + (rect.height() + metrics.capHeight()) / 2));
    painter.setFont(font);
    painter.setPen(colour);
    painter.setLayoutDirection(Qt::LayoutDirectionAuto);
    painter.drawText(place, fit.shown);
    if (!fit.line.emojis.isEmpty())
        paintEmojis(painter, fit, font, place, colour);
    return width;
}

qreal lineWidth(const QString &text, TextRole role) {
    return QFontMetricsF(fontFor(role)).horizontalAdvance(text);
}

} // namespace tavrine::look
