#pragma once

#include <QRect>

#include <functional>

class QWidget;

namespace tavrine {

/// The frame cut to the size of `usable` where it is larger, and moved into it by the shortest way. A usable part that
/// is empty changes nothing.
[[nodiscard]] QRectF fitted(const QRectF &frame, const QRectF &usable);

/// Keeps the window, with the frame that the desktop gives it, within the free part of its screen: when it comes up,
/// and whenever that part changes or the window goes to another screen. What a person does to it in between stays.
///
/// A smallest size that has no room gives way. Call it once, before the window is shown; main thread.
void fitToScreen(QWidget &window);

/// Where something of this program lies over all windows, at the upper edge of a screen, in the toolkit's points. One
/// that would come up under it stands below it instead. Asked each time; none at all without a function.
void setCoveredPlace(std::function<QRect()> place);

} // namespace tavrine
