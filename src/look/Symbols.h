#pragma once

#include <QColor>
#include <QPainterPath>
#include <QPixmap>
#include <QRectF>
#include <QString>
#include <QStringList>

class QPainter;

namespace tavrine::look {

/// The symbols that views show, by the system's names. Main thread only.
///
/// A symbol is a shape without colour: it is tinted when painted, and drawn anew for each size and scale, so it is
/// sharp everywhere. Finished pictures are kept, the last used of them, up to `symbolCacheBytes`.

inline constexpr qsizetype symbolCacheBytes = qsizetype{1024} * 1024;

[[nodiscard]] bool hasSymbol(const QString &name);

/// All names, sorted.
[[nodiscard]] QStringList symbolNames();

/// Paints the symbol in `colour`, `size` points high and wide, in the middle of `rect`, on whole device pixels. An
/// unknown name paints nothing.
void paintSymbol(QPainter &painter, const QRectF &rect, const QString &name, qreal size, const QColor &colour);

/// The symbol as a picture of `size` by `size` points at `scale` device pixels per point; null for an unknown name.
[[nodiscard]] QPixmap symbolPixmap(const QString &name, qreal size, const QColor &colour, qreal scale);

/// Bytes of finished pictures that are kept at present.
[[nodiscard]] qsizetype symbolCacheUse();

} // namespace tavrine::look
