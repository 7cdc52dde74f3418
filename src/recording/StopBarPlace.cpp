#include "recording/StopBarPlace.h"

#include "panels/Placement.h"

#include <optional>

namespace tavrine {
namespace {

constexpr double clearance = 5; // the border's line ends 4 points from the area

double distance(const QRectF &one, const QRectF &other) {
    return (one.center() - other.center()).manhattanLength();
}

} // namespace

QRectF placeOfStopBar(const Screen &screen, QSizeF size) {
    const QRectF &frame = screen.frame;
    return {frame.x() + (frame.width() - size.width()) * 0.5,
            minY(frame) + frame.height() - size.height() - stopBarBelowTop, size.width(), size.height()};
}

QRectF movedOutOf(const RecordingArea &area, const QRectF &frame, const QList<Screen> &screens) {
    const QRectF &screen = area.screen.frame;
    const QRectF shunned = area.appKitRect.translated(screen.topLeft())
                               .adjusted(-clearance, -clearance, clearance, clearance)
                               .intersected(screen);
    if (!frame.intersects(shunned))
        return frame;
    const double right = screen.x() + screen.width();
    const QRectF beside[] = {
        {screen.x(), maxY(shunned), screen.width(), maxY(screen) - maxY(shunned)}, // above
        {screen.x(), minY(screen), screen.width(), minY(shunned) - minY(screen)},  // below
        {screen.x(), minY(screen), shunned.x() - screen.x(), screen.height()},     // left
        {shunned.x() + shunned.width(), minY(screen), right - shunned.x() - shunned.width(), screen.height()}};
    std::optional<QRectF> nearest;
    for (const QRectF &room : beside) {
        if (room.width() < frame.width() || room.height() < frame.height())
            continue;
        const QRectF place = movedInto(room, frame);
        if (!nearest || distance(place, frame) < distance(*nearest, frame))
            nearest = place;
    }
    if (nearest)
        return *nearest;
    for (const Screen &other : screens)
        if (other.number != area.screen.number)
            return placeOfStopBar(other, frame.size());
    return frame;
}

} // namespace tavrine
