#pragma once

#include <QColor>
#include <QMargins>
#include <QRectF>

class QPainter;

namespace tavrine::look {

/// Room that a panel's shadow needs round it.
inline constexpr QMargins shadowMargins{36, 24, 36, 48};

/// Paints the shadow that a rounded rectangle throws. It is drawn once for each radius, colour and scale and then laid
/// down in nine pieces, so that a repaint costs little whatever the size.
void paintShadow(QPainter &painter, const QRectF &rect, qreal radius, const QColor &colour);

} // namespace tavrine::look
