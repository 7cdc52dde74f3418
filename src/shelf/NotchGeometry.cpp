#include "shelf/NotchGeometry.h"

#include "ports/Screens.h"
#include "shelf/NotchViewModel.h"

#include <algorithm>

namespace tavrine {
namespace {

/// Grows downward from the screen's upper edge.
QRectF underTheEdge(const QRectF &screen, double width, double height) {
    return {screen.center().x() - width * 0.5, maxY(screen) - height, width, height};
}

} // namespace

QRectF restingFrame(const QRectF &screen) {
    return underTheEdge(screen, notch::width, notch::defaultHeight);
}

QRectF targetFrame(const NotchViewModel &model, const QRectF &screen) {
    const auto count = static_cast<int>(model.items().size());
    double height = notch::defaultHeight;
    double width = notch::width;
    if (model.showsItems()) {
        height += notch::shelfExtraHeight;
        if (count > notch::itemsAtRestingWidth)
            width = std::min(count, notch::maxItemsForSizing) * notch::itemSlotWidth + notch::shelfSidePadding;
    } else if (model.shouldExpand()) {
        height += notch::dropTargetExtraHeight;
    }
    return underTheEdge(screen, std::min(width, screen.width()), height);
}

QSizeF largestShelf() {
    return {notch::maxItemsForSizing * notch::itemSlotWidth + notch::shelfSidePadding,
            notch::defaultHeight + notch::shelfExtraHeight};
}

bool isInHoverBand(const QPointF &place, const QRectF &screen) {
    const double left = screen.center().x() - notch::width / 2;
    return place.x() >= left - notch::hoverMargin && place.x() <= left + notch::width + notch::hoverMargin &&
           place.y() >= maxY(screen) - notch::hoverBandHeight && place.y() <= maxY(screen);
}

bool isNear(const QPointF &place, const QRectF &shelf) {
    constexpr double margin = notch::hoverMargin;
    return shelf.adjusted(-margin, -margin, margin, margin).contains(place);
}

} // namespace tavrine
