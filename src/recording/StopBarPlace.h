#pragma once

#include "recording/RecordingArea.h"

namespace tavrine {

inline constexpr double stopBarBelowTop = 40; ///< points between the screen's upper edge and the bar

/// In the middle of the screen's upper edge: where the stop bar stands.
[[nodiscard]] QRectF placeOfStopBar(const Screen &screen, QSizeF size);

/// `frame` moved out of what is recorded by the shortest way, for desktops whose pictures show every window. Where
/// there is no room beside the area on its screen, it goes to where it would stand on another; unchanged when there is
/// none.
[[nodiscard]] QRectF movedOutOf(const RecordingArea &area, const QRectF &frame, const QList<Screen> &screens);

} // namespace tavrine
