#include "panels/Placement.h"

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

/// The left and the right neighbour share an edge, which belongs to the right one.
bool holds(const QRectF &frame, QPointF point) {
    return point.x() >= frame.x() && point.x() < frame.x() + frame.width() && point.y() >= minY(frame) &&
           point.y() <= maxY(frame);
}

bool isSound(const QRectF &frame) {
    return std::isfinite(frame.x()) && std::isfinite(frame.y()) && std::isfinite(frame.width()) &&
           std::isfinite(frame.height()) && frame.width() > 0 && frame.height() > 0;
}

double movedStart(double start, double length, double low, double high) {
    return std::max(low, std::min(start, high - length));
}

} // namespace

std::optional<Screen> screenForTool(const Screens &screens) {
    const QList<Screen> all = screens.screens();
    const QPointF pointer = screens.mouseLocation();
    for (const Screen &screen : all)
        if (holds(screen.frame, pointer))
            return screen;
    return mainOrFirstScreen(screens);
}

std::optional<Screen> mainOrFirstScreen(const Screens &screens) {
    if (auto main = screens.mainScreen())
        return main;
    const QList<Screen> all = screens.screens();
    return all.isEmpty() ? std::nullopt : std::optional(all.first());
}

QRectF usableFrame(const Screen &screen) {
    if (isSound(screen.visibleFrame))
        return screen.visibleFrame;
    return isSound(screen.frame) ? screen.frame : QRectF();
}

QRectF centredIn(const QRectF &area, QSizeF size, double above) {
    const QPointF middle = area.center();
    return {middle.x() - size.width() / 2, middle.y() - size.height() / 2 + above, size.width(), size.height()};
}

QRectF movedInto(const QRectF &area, QRectF frame) {
    frame.setSize(frame.size().boundedTo(area.size()));
    frame.moveTo(movedStart(frame.x(), frame.width(), area.x(), area.x() + area.width()),
                 movedStart(minY(frame), frame.height(), minY(area), maxY(area)));
    return frame;
}

bool isWhollyOnAScreen(const Screens &screens, const QRectF &frame) {
    const QList<Screen> all = screens.screens();
    return std::any_of(all.begin(), all.end(), [&](const Screen &s) { return usableFrame(s).contains(frame); });
}

QRectF movedOntoAScreen(const Screens &screens, const QRectF &frame) {
    const auto shared = [&frame](const Screen &screen) {
        const QRectF part = usableFrame(screen).intersected(frame);
        return part.width() * part.height();
    };
    const QList<Screen> all = screens.screens();
    const auto most = std::max_element(all.begin(), all.end(),
                                       [&](const Screen &a, const Screen &b) { return shared(a) < shared(b); });
    const auto screen = most != all.end() && shared(*most) > 0 ? std::optional(*most) : mainOrFirstScreen(screens);
    const QRectF usable = screen ? usableFrame(*screen) : QRectF();
    return usable.isEmpty() ? frame : movedInto(usable, frame);
}

} // namespace tavrine
