#include "programs/screencapture/OverlayScene.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrine {
namespace {

constexpr double labelGap = 9;
constexpr double labelShadow = 6;
constexpr double crossGap = 15; // the pointer's own cross ends before

std::u32string number(int value) {
    const std::string digits = std::to_string(value);
    return {digits.begin(), digits.end()};
}

int rounded(double value) {
    return static_cast<int>(std::lround(value));
}

QRect moved(const QRect &area, const QRect &within) {
    const int x = std::max(within.left(), std::min(area.left(), within.right() - area.width() + 1));
    const int y = std::max(within.top(), std::min(area.top(), within.bottom() - area.height() + 1));
    return {QPoint(x, y), area.size()};
}

/// Lines through the place to the monitor's edges, open around the pointer.
std::vector<QRect> linesThrough(QPoint place, const OverlayMonitor &monitor) {
    const QRect &area = monitor.area;
    const int open = rounded(crossGap * monitor.scale);
    return {QRect(QPoint(area.left(), place.y()), QPoint(place.x() - open, place.y())),
            QRect(QPoint(place.x() + open, place.y()), QPoint(area.right(), place.y())),
            QRect(QPoint(place.x(), area.top()), QPoint(place.x(), place.y() - open)),
            QRect(QPoint(place.x(), place.y() + open), QPoint(place.x(), area.bottom()))};
}

void addFrameBetween(std::vector<QRect> &areas, const QRect &outer, const QRect &inner) {
    if (inner.isEmpty()) {
        areas.push_back(outer);
        return;
    }
    const std::array<QRect, 4> sides{
        QRect(outer.topLeft(), QPoint(outer.right(), inner.top() - 1)),
        QRect(QPoint(outer.left(), inner.bottom() + 1), outer.bottomRight()),
        QRect(QPoint(outer.left(), inner.top()), QPoint(inner.left() - 1, inner.bottom())),
        QRect(QPoint(inner.right() + 1, inner.top()), QPoint(outer.right(), inner.bottom()))};
    std::copy_if(sides.begin(), sides.end(), std::back_inserter(areas),
                 [](const QRect &side) { return !side.isEmpty(); });
}

void addClearChange(std::vector<QRect> &areas, const OverlayScene &before, const OverlayScene &after) {
    if (before.clear == after.clear && before.isPicked == after.isPicked && before.scale == after.scale)
        return;
    const int margin = std::max(before.frameWidth(), after.frameWidth());
    const auto grown = [margin](const QRect &area) { return area.adjusted(-margin, -margin, margin, margin); };
    const bool isOneDrag = before.clear && after.clear && !before.isPicked && !after.isPicked;
    if (isOneDrag && before.clear->intersects(*after.clear)) {
        // What is clear in both stays as it is.
        addFrameBetween(areas, grown(before.clear->united(*after.clear)), before.clear->intersected(*after.clear));
        return;
    }
    for (const OverlayScene *const scene : {&before, &after})
        if (scene->clear)
            areas.push_back(grown(*scene->clear));
}

std::vector<QRect> placesOf(const OverlayScene &scene) {
    std::vector<QRect> places = scene.crossLines;
    if (scene.magnifier)
        places.push_back(scene.magnifier->bounds());
    const int shadow = static_cast<int>(std::ceil(labelShadow * scene.scale)) + 1;
    for (const OverlayScene::Label &label : scene.labels)
        places.push_back(label.area.adjusted(-shadow, -shadow, shadow, shadow));
    return places;
}

} // namespace

OverlayScene OverlayScene::of(const SelectionModel &model, const std::vector<OverlayMonitor> &monitors,
                              const LabelSize &labelSize, const WrittenSize &writtenSize) {
    const QPoint pointer = model.pointer();
    const OverlayMonitor &monitor = monitorAt(monitors, pointer);
    OverlayScene scene;
    scene.scale = monitor.scale;
    scene.clear = model.selection();
    scene.isPicked = model.state() == SelectionModel::State::picking;
    if (model.state() == SelectionModel::State::aiming)
        scene.crossLines = linesThrough(pointer, monitor);
    if (!scene.isPicked) {
        const std::u32string place = number(pointer.x()) + U", " + number(pointer.y());
        const QPoint drag = pointer - model.anchor();
        scene.magnifier =
            MagnifierGeometry::place(pointer, monitor.area, monitor.scale, labelSize(place, monitor.scale),
                                     {drag.x() < 0 ? -1 : 1, drag.y() < 0 ? -1 : 1});
        if (!scene.magnifier->label.isEmpty())
            scene.labels.push_back({scene.magnifier->label, place});
    }
    if (scene.clear) {
        const QSize written = writtenSize ? writtenSize(*scene.clear) : scene.clear->size();
        const std::u32string size = number(written.width()) + U" × " + number(written.height());
        const QSize room = labelSize(size, monitor.scale);
        const QRect avoid = scene.magnifier ? scene.magnifier->circle.united(scene.magnifier->label) : QRect();
        if (!room.isEmpty())
            scene.labels.push_back({sizeLabelPlace(*scene.clear, room, monitor.area, avoid, monitor.scale), size});
    }
    return scene;
}

int OverlayScene::frameWidth() const {
    return 2 * std::max(1, static_cast<int>(scale));
}

QRect sizeLabelPlace(const QRect &selection, QSize label, const QRect &monitor, const QRect &avoid, double scale) {
    const int gap = rounded(labelGap * scale);
    const int above = selection.top() - gap - label.height();
    const int below = selection.bottom() + 1 + gap;
    const int rightEnd = selection.right() + 1 - label.width();
    const QRect candidates[] = {
        {{selection.left(), above}, label},
        {{selection.left(), below}, label},
        {{rightEnd, above}, label},
        {{rightEnd, below}, label},
        {selection.topLeft() + QPoint(gap, gap), label},
        {{selection.left() + gap, selection.bottom() + 1 - gap - label.height()}, label},
    };
    const QRect crowded = avoid.isEmpty() ? QRect() : avoid.adjusted(-gap, -gap, gap, gap);
    for (const QRect &candidate : candidates) {
        // Sideways it may be pushed along; upwards and downwards it would slide over the selection's edge.
        const QRect place = moved(candidate, {monitor.left(), candidate.top(), monitor.width(), candidate.height()});
        if (monitor.contains(place) && !place.intersects(crowded))
            return place;
    }
    return moved(candidates[0], monitor);
}

std::vector<QRect> changedAreas(const OverlayScene &before, const OverlayScene &after) {
    std::vector<QRect> areas;
    if (before == after)
        return areas;
    addClearChange(areas, before, after);
    for (const auto &places : {placesOf(before), placesOf(after)})
        std::copy_if(places.begin(), places.end(), std::back_inserter(areas),
                     [](const QRect &area) { return !area.isEmpty(); });
    return areas;
}

} // namespace tavrine
