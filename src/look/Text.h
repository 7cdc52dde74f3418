#pragma once

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>

class QPainter;

namespace tavrine::look {

/// What a piece of text is for. The family is the desktop's; the sizes are ours.
enum class TextRole { hero, title, heading, search, body, bodyStrong, callout, caption, captionStrong, mini };

[[nodiscard]] QFont fontFor(TextRole role);

/// `text` as one line no wider than `width`: white space runs and line breaks become one blank, and what does not fit
/// is an ellipsis. A text of nothing but white space shows as marks of it. Only as much of the text is read as could
/// fit, so its length costs nothing; no letter is parted from its marks, and right-to-left text keeps its order.
[[nodiscard]] QString oneLine(const QString &text, const QFont &font, qreal width);

/// Paints one line as `oneLine` gives it, its emoji as coloured pictures where there is a font of them, cut to the
/// rectangle's width, its capitals centred between the rectangle's top and bottom. `alignment` is horizontal. Returns
/// the width that was used.
qreal paintLine(QPainter &painter, const QRectF &rect, const QString &text, TextRole role, const QColor &colour,
                Qt::Alignment alignment = Qt::AlignLeft);

/// The width of a short text as one line.
[[nodiscard]] qreal lineWidth(const QString &text, TextRole role);

} // namespace tavrine::look
