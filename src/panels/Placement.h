#pragma once

#include "ports/Screens.h"

#include <QRectF>
#include <QSizeF>

namespace tavrine {

/// Where floating windows stand. Geometry is that of `Screens`: points, y upwards.

/// The screen that a floating tool opens on: the first one that holds the pointer, else the main one, else the first.
[[nodiscard]] std::optional<Screen> screenForTool(const Screens &screens);
/// The one to take when the pointer does not matter.
[[nodiscard]] std::optional<Screen> mainOrFirstScreen(const Screens &screens);

/// The part of a screen that is free for windows; the whole screen where the desktop tells none that makes sense.
[[nodiscard]] QRectF usableFrame(const Screen &screen);

/// In the middle of the area, and `above` it.
[[nodiscard]] QRectF centredIn(const QRectF &area, QSizeF size, double above = 0);
/// Moved into the area by the shortest way, and cut to its size where it is larger.
[[nodiscard]] QRectF movedInto(const QRectF &area, QRectF frame);

/// True when one screen has the whole of it in its usable frame.
[[nodiscard]] bool isWhollyOnAScreen(const Screens &screens, const QRectF &frame);
/// Moved onto the screen that has most of it, else onto the main one. Unchanged without a screen.
[[nodiscard]] QRectF movedOntoAScreen(const Screens &screens, const QRectF &frame);

} // namespace tavrine
