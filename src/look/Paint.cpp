#include "look/Paint.h"

#include "base/DesktopWords.h"
#include "look/Metrics.h"
#include "look/Symbols.h"

#include <QPaintDevice>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace tavrine::look {
namespace {

constexpr qreal capHeight = 20;
constexpr qreal capPadding = 6;
constexpr qreal plateSide = 36;
constexpr qreal actionSide = 28;

qreal devicePixel(const QPainter &painter) {
    return 1.0 / painter.device()->devicePixelRatioF();
}

qreal onGrid(const QPainter &painter, qreal place) {
    const qreal pixel = devicePixel(painter);
    return std::round(place / pixel) * pixel;
}

void paintCap(QPainter &painter, const QRectF &cap, const Theme &theme) {
    fillRounded(painter, cap, radius::badge, theme.control);
    strokeHairline(painter, cap, radius::badge, theme.outline);
}

QRectF capRect(const QPainter &painter, const QRectF &rect, qreal width) {
    return {onGrid(painter, rect.left()), onGrid(painter, rect.center().y() - capHeight / 2), width, capHeight};
}

void paintAction(QPainter &painter, const QRectF &rect, const QString &symbol, const RowState &state,
                 const Theme &theme) {
    const bool isUnderPointer = state.pointer && rect.contains(*state.pointer);
    if (isUnderPointer)
        fillRounded(painter, rect, radius::control, state.isPressed ? theme.pressed : theme.hover);
    paintSymbol(painter, rect, symbol, symbolsize::medium, isUnderPointer ? theme.text : theme.secondaryText);
}

} // namespace

void preparePainter(QPainter &painter) {
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.setPen(Qt::NoPen);
}

void fillRounded(QPainter &painter, const QRectF &rect, qreal radius, const QColor &colour) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    const qreal fitting = std::min({radius, rect.width() / 2, rect.height() / 2});
    painter.drawRoundedRect(rect, fitting, fitting);
}

void strokeHairline(QPainter &painter, const QRectF &rect, qreal radius, const QColor &colour) {
    const qreal half = devicePixel(painter) / 2;
    painter.setPen(QPen(colour, half * 2));
    painter.setBrush(Qt::NoBrush);
    const qreal fitting = std::min({radius, rect.width() / 2, rect.height() / 2}) - half;
    painter.drawRoundedRect(rect.adjusted(half, half, -half, -half), fitting, fitting);
    painter.setPen(Qt::NoPen);
}

void paintSeparator(QPainter &painter, const QRectF &rect, const Theme &theme) {
    const qreal pixel = devicePixel(painter);
    const qreal bottom = onGrid(painter, rect.bottom());
    painter.fillRect(QRectF(rect.left(), bottom - pixel, rect.width(), pixel), theme.separator);
}

void paintFocusRing(QPainter &painter, const QRectF &rect, qreal radius, const Theme &theme) {
    painter.setPen(QPen(theme.focusRing, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(rect.adjusted(-2, -2, 2, 2), radius + 2, radius + 2);
    painter.setPen(Qt::NoPen);
}

void paintCard(QPainter &painter, const QRectF &rect, const Theme &theme) {
    fillRounded(painter, rect, radius::card, theme.elevated);
    strokeHairline(painter, rect, radius::card, theme.isDark ? theme.separator : theme.outline);
}

qreal keyCapWidth(const QString &key) {
    return std::max(capHeight, std::ceil(lineWidth(inDesktopWords(key), TextRole::caption) + 2 * capPadding));
}

qreal paintKeyCap(QPainter &painter, const QRectF &rect, const QString &key, const Theme &theme) {
    const QRectF cap = capRect(painter, rect, keyCapWidth(key));
    paintCap(painter, cap, theme);
    // Whole words are centred by their capitals' height; a word of low letters alone would sit high.
    paintLine(painter, cap, inDesktopWords(key), TextRole::caption, theme.secondaryText, Qt::AlignHCenter);
    return cap.width();
}

KeyHint keyHint(const QString &words, const QString &symbol) {
    const qsizetype blank = words.lastIndexOf(u' ');
    return {words.left(std::max<qsizetype>(0, blank)), symbol, words.mid(blank + 1)};
}

qreal keyHintWidth(const KeyHint &hint) {
    const qreal cap = hint.key.isEmpty() ? (hint.symbol.isEmpty() ? 0 : capHeight) : keyCapWidth(hint.key);
    return cap + (cap > 0 && !hint.label.isEmpty() ? 6 : 0) + std::ceil(lineWidth(hint.label, TextRole::callout));
}

qreal paintKeyHint(QPainter &painter, const QRectF &rect, const KeyHint &hint, const Theme &theme) {
    qreal x = rect.left();
    if (!hint.key.isEmpty()) {
        x += paintKeyCap(painter, rect, hint.key, theme);
    } else if (!hint.symbol.isEmpty()) {
        const QRectF cap = capRect(painter, rect, capHeight);
        paintCap(painter, cap, theme);
        paintSymbol(painter, cap, hint.symbol, symbolsize::small, theme.secondaryText);
        x += capHeight;
    }
    if (!hint.label.isEmpty()) {
        if (x > rect.left())
            x += 6;
        x += paintLine(painter, QRectF(x, rect.top(), std::max(0.0, rect.right() - x), rect.height()), hint.label,
                       TextRole::callout, theme.secondaryText);
    }
    return x - rect.left();
}

qreal badgeWidth(const QString &text) {
    return std::max(18.0, std::ceil(lineWidth(text, TextRole::captionStrong) + 12));
}

qreal paintBadge(QPainter &painter, const QRectF &rect, const QString &text, const QColor &ground,
                 const QColor &colour) {
    const QRectF badge(onGrid(painter, rect.left()), onGrid(painter, rect.center().y() - 9), badgeWidth(text), 18);
    fillRounded(painter, badge, 9, ground);
    paintLine(painter, badge, text, TextRole::captionStrong, colour, Qt::AlignHCenter);
    return badge.width();
}

void paintSymbolPlate(QPainter &painter, const QRectF &rect, const QString &symbol, const QColor &ground,
                      const QColor &colour) {
    fillRounded(painter, rect, rect.height() * 0.25, ground);
    // Whole steps of the icons' grid stay sharp: 16 points in all plates but the very large.
    const qreal size = rect.height() >= 60   ? std::round(rect.height() * 0.5)
                       : rect.height() >= 44 ? 24
                       : rect.height() >= 36 ? 20
                                             : 16;
    paintSymbol(painter, rect, symbol, size, colour);
}

void paintThumbnail(QPainter &painter, const QRectF &rect, const QPixmap &picture, const Theme &theme) {
    const QSizeF whole = picture.size();
    if (whole.isEmpty())
        return;
    const qreal part = std::max(rect.width() / whole.width(), rect.height() / whole.height());
    const QSizeF shown = rect.size() / part;
    const QRectF source(QPointF((whole.width() - shown.width()) / 2, (whole.height() - shown.height()) / 2), shown);
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    // A brush and not a clip: a clip's edge is not smooth.
    QTransform place;
    place.translate(rect.left(), rect.top());
    place.scale(part, part);
    place.translate(-source.left(), -source.top());
    QPixmap plain = picture;
    plain.setDevicePixelRatio(1);
    QBrush brush(plain);
    brush.setTransform(place);
    painter.setPen(Qt::NoPen);
    painter.setBrush(brush);
    painter.drawRoundedRect(rect, radius::control - 2, radius::control - 2);
    painter.restore();
    strokeHairline(painter, rect, radius::control - 2, theme.separator);
}

std::vector<QRectF> rowActionRects(const QRectF &rect, size_t count) {
    std::vector<QRectF> rects;
    const qreal top = std::round(rect.center().y() - actionSide / 2);
    for (size_t i = 0; i < count; ++i)
        rects.emplace_back(rect.right() - space::medium - qreal(count - i) * (actionSide + space::hair), top,
                           actionSide, actionSide);
    return rects;
}

void paintRow(QPainter &painter, const QRectF &rect, const RowContent &content, const RowState &state,
              const Theme &theme) {
    // A point of ground between the plates of two neighbours.
    const QRectF body = rect.adjusted(0, 1, 0, -1);
    if (state.isSelected)
        fillRounded(painter, body, radius::row, theme.selection);
    else if (state.isPressed || state.isHovered)
        fillRounded(painter, body, radius::row, state.isPressed ? theme.pressed : theme.hover);

    const qreal side = std::min(plateSide, rect.height() - space::small);
    const qreal inset = std::min<qreal>(space::medium, (rect.height() - side) / 2);
    const QRectF plate(rect.left() + inset, std::round(rect.center().y() - side / 2), side, side);
    qreal left = plate.right() + space::medium;
    if (!content.thumbnail.isNull()) {
        paintThumbnail(painter, plate, content.thumbnail, theme);
        if (!content.badgeSymbol.isEmpty()) {
            const QRectF badge(plate.center() - QPointF(8, 8), QSizeF(16, 16));
            fillRounded(painter, badge.adjusted(-3, -3, 3, 3), 11, QColor(0, 0, 0, 140));
            paintSymbol(painter, badge, content.badgeSymbol, symbolsize::small, Qt::white);
        }
    } else if (!content.symbol.isEmpty()) {
        paintSymbolPlate(painter, plate, content.symbol, state.isSelected ? theme.accent : theme.control,
                         state.isSelected ? theme.onAccent : theme.secondaryText);
    } else {
        left = rect.left() + space::medium;
    }

    qreal right = rect.right() - space::medium;
    if (!content.actions.empty() && (state.isSelected || state.isHovered)) {
        const auto rects = rowActionRects(rect, content.actions.size());
        for (size_t i = 0; i < rects.size(); ++i)
            paintAction(painter, rects[i], content.actions[i], state, theme);
        right = rects.front().left() - space::small;
    } else if (!content.key.isEmpty()) {
        const qreal width = keyCapWidth(content.key);
        paintKeyCap(painter, QRectF(right - width, rect.top(), width, rect.height()), content.key, theme);
        right -= width + space::small;
    }

    const qreal width = right - left;
    if (content.subtitle.isEmpty()) {
        paintLine(painter, QRectF(left, rect.top(), width, rect.height()), content.title, TextRole::body, theme.text);
        return;
    }
    // The two lines as one block in the middle.
    const qreal middle = rect.center().y();
    paintLine(painter, QRectF(left, middle - 18, width, 18), content.title, TextRole::bodyStrong, theme.text);
    paintLine(painter, QRectF(left, middle + 1, width, 16), content.subtitle, TextRole::caption, theme.secondaryText);
}

void paintSectionHeader(QPainter &painter, const QRectF &rect, const QString &title, const Theme &theme) {
    paintLine(painter, rect.adjusted(space::medium, 0, -space::medium, 0), title, TextRole::captionStrong,
              theme.secondaryText);
}

} // namespace tavrine::look
