#pragma once

#include <QMargins>
#include <QRectF>

class QPainter;

namespace tavrine::look {

struct Theme;

/// Room that a panel's shadow needs round it.
inline constexpr QMargins shadowMargins{36, 24, 36, 48};

/// Paints the shadow that a panel at this place throws, and what else parts it from the desktop. The shadow is drawn
/// once for each colour and scale and then laid down in nine pieces, so that a repaint costs little whatever the size.
void paintPanelShadow(QPainter &painter, const QRectF &panel, const Theme &theme);

} // namespace tavrine::look
