#pragma once

#include "base/Date.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <chrono>

namespace tavrine {

class NotchViewModel;

/// The measures of the shelf's window, in points, and its times.
namespace notch {
inline constexpr double defaultHeight = 24; ///< of the band on a screen without a notch
inline constexpr double width = 300;        ///< at rest, and of the hover band
inline constexpr double hoverBandHeight = 3;
inline constexpr double hoverMargin = 10; ///< beside the band, and round the open shelf
inline constexpr double dropTargetExtraHeight = 55;
inline constexpr double shelfExtraHeight = 200;
inline constexpr double itemSlotWidth = 85;
inline constexpr double shelfSidePadding = 40;
inline constexpr int maxItemsForSizing = 6;
/// Up to as many items have room at the width of the shelf at rest.
inline constexpr int itemsAtRestingWidth = 3;
inline constexpr Seconds pollInterval{0.05};
inline constexpr Seconds healthCheckInterval{10};
inline constexpr Seconds stuckThreshold{15};
inline constexpr Seconds modelDebounce{0.05};
inline constexpr std::chrono::milliseconds frameAnimationDuration{250};
inline constexpr std::chrono::milliseconds fileDragAnimationDuration{180};
inline constexpr std::chrono::milliseconds dragReturnDuration{250}; ///< of a picture that nobody took
inline constexpr int moveAttempts = 12;
inline constexpr double dragStartDistance = 3; ///< points; a drag begins beyond it
} // namespace notch

// Frames and places are in points with the origin at the bottom left, as `Screens` tells them. A panel of the desktop
// at the upper edge is lain over: the band is at the screen's very edge.

/// The black band that is there while nothing happens.
[[nodiscard]] QRectF restingFrame(const QRectF &screen);
/// Where the window belongs as the model stands.
[[nodiscard]] QRectF targetFrame(const NotchViewModel &model, const QRectF &screen);
/// The largest of all.
[[nodiscard]] QSizeF largestShelf();
/// Whether a pointer there begins to hover: at the very top of the screen, and of no screen above it.
[[nodiscard]] bool isInHoverBand(const QPointF &place, const QRectF &screen);
/// Whether a pointer there still hovers over the open shelf.
[[nodiscard]] bool isNear(const QPointF &place, const QRectF &shelf);

} // namespace tavrine
