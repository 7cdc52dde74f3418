#pragma once

#include <QPainterPath>
#include <QSizeF>

namespace tavrine {

/// Space at either side of the shelf's window that its shape leaves free, in points.
inline constexpr double notchShoulder = 6;

/// The shape of the shelf in a window of that size, from its top left corner, in points: it hangs from the screen's
/// edge by two small shoulders, and its lower corners are round.
[[nodiscard]] QPainterPath notchOutline(const QSizeF &size);

} // namespace tavrine
