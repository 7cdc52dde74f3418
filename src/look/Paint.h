#pragma once

#include "look/Text.h"
#include "look/Theme.h"

#include <QPixmap>
#include <QPointF>
#include <QRectF>
#include <QStringList>

#include <optional>
#include <vector>

class QPainter;

namespace tavrine::look {

/// Painted pieces that views put into lists and frames without a widget for each. All take points, and put their edges
/// on whole device pixels.

/// Switches on what every painting here relies on. Widgets call it first.
void preparePainter(QPainter &painter);

void fillRounded(QPainter &painter, const QRectF &rect, qreal radius, const QColor &colour);
/// A line one device pixel wide, just inside the rectangle.
void strokeHairline(QPainter &painter, const QRectF &rect, qreal radius, const QColor &colour);
/// One device pixel high, at the rectangle's bottom.
void paintSeparator(QPainter &painter, const QRectF &rect, const Theme &theme);
/// Two points wide, a point away from the rectangle, so that it shows round fills of its own colour.
void paintFocusRing(QPainter &painter, const QRectF &rect, qreal radius, const Theme &theme);
void paintCard(QPainter &painter, const QRectF &rect, const Theme &theme);

/// A key cap: "esc", "↵", "⌘⇧V". Painted from the left, centred in height; returns the width used.
qreal paintKeyCap(QPainter &painter, const QRectF &rect, const QString &key, const Theme &theme);
[[nodiscard]] qreal keyCapWidth(const QString &key);

/// What a hint in a footer says: a key or a symbol, and what it does.
struct KeyHint {
    QString key;
    QString symbol; ///< shown in the cap when there is no key
    QString label;
};
/// The hint that `words` are: the last of them is what the key does, those before it stand on the key.
[[nodiscard]] KeyHint keyHint(const QString &words, const QString &symbol = {});
/// Paints the hint from the left, centred in height; returns the width used.
qreal paintKeyHint(QPainter &painter, const QRectF &rect, const KeyHint &hint, const Theme &theme);
[[nodiscard]] qreal keyHintWidth(const KeyHint &hint);

/// A small filled label such as a count; returns the width used.
qreal paintBadge(QPainter &painter, const QRectF &rect, const QString &text, const QColor &ground,
                 const QColor &colour);
[[nodiscard]] qreal badgeWidth(const QString &text);

/// A symbol on a rounded ground, as rows and settings show what they are about.
void paintSymbolPlate(QPainter &painter, const QRectF &rect, const QString &symbol, const QColor &ground,
                      const QColor &colour);

/// A picture, cropped to fill the rectangle, with rounded corners and a hairline.
void paintThumbnail(QPainter &painter, const QRectF &rect, const QPixmap &picture, const Theme &theme);

struct RowState {
    bool isSelected = false;
    bool isHovered = false;
    bool isPressed = false;
    /// Where the pointer is, in the painter's coordinates, while it is over the row.
    std::optional<QPointF> pointer;
};

/// A row of two lines: a symbol or a thumbnail, a title and a subtitle, and buttons that show under the pointer or with
/// the selection.
struct RowContent {
    QString symbol;
    QPixmap thumbnail;   ///< in place of the symbol when not null
    QString badgeSymbol; ///< laid over the thumbnail's corner
    QString title;
    QString subtitle;
    std::vector<QString> actions; ///< the buttons' symbols, left to right
    QString key;                  ///< a key cap at the right end while there are no buttons to show
};
void paintRow(QPainter &painter, const QRectF &rect, const RowContent &content, const RowState &state,
              const Theme &theme);
/// Where the buttons of a row stand, left to right: for painting and for clicks.
[[nodiscard]] std::vector<QRectF> rowActionRects(const QRectF &rect, size_t count);

void paintSectionHeader(QPainter &painter, const QRectF &rect, const QString &title, const Theme &theme);

} // namespace tavrine::look
