#include "capture/editor/AnnotationLayer.h"

#include "capture/editor/AnnotationRenderer.h"

#include <QPainter>
#include <QSet>

namespace tavrine {
void AnnotationLayer::setGround(const QImage &ground, const Place &place) {
    m_place = place;
    m_shown.clear();
    m_ground = ground;
    m_image = m_ground;
    m_isFresh = true;
}

QRect AnnotationLayer::areaOf(const DrawingPath &path) const {
    const QRectF bounds = drawingBounds(path, pointsIn(path, m_place.canvas), false);
    // Cut before it is made of whole numbers: the mouse may have been far outside.
    const double scale = m_place.scale;
    const QRectF inside = QRectF(bounds.topLeft() * scale, bounds.size() * scale) & QRectF(m_place.area);
    return inside.isEmpty() ? QRect() : inside.toAlignedRect().adjusted(-1, -1, 1, 1) & m_place.area;
}

// Takes the new list over, and finds what changes on the way from the old one. The annotations never change places
// among themselves; if they do, all is painted.
QRegion AnnotationLayer::takeOver(const std::vector<DrawingPath> &drawings) {
    QSet<QString> kept;
    QSet<QString> known;
    for (const DrawingPath &path : drawings)
        kept.insert(path.id);
    for (const Shown &shown : m_shown)
        known.insert(shown.path.id);

    QRegion changed;
    std::vector<Shown> now;
    now.reserve(drawings.size());
    size_t old = 0;
    for (const DrawingPath &path : drawings) {
        while (old < m_shown.size() && !kept.contains(m_shown[old].path.id))
            changed += m_shown[old++].area;
        if (old < m_shown.size() && m_shown[old].path.id == path.id) {
            Shown &before = m_shown[old++];
            if (before.path == path) {
                now.push_back(std::move(before));
                continue;
            }
            changed += before.area;
        } else if (known.contains(path.id)) {
            changed += m_place.area;
        }
        now.push_back({path, areaOf(path)});
        changed += now.back().area;
    }
    for (; old < m_shown.size(); ++old)
        changed += m_shown[old].area;
    m_shown = std::move(now);
    return changed;
}

QRegion AnnotationLayer::show(const std::vector<DrawingPath> &drawings) {
    if (m_image.isNull())
        return {};
    bool isAppended = drawings.size() >= m_shown.size();
    for (size_t i = 0; isAppended && i < m_shown.size(); ++i)
        isAppended = m_shown[i].path == drawings[i];
    if (isAppended) { // what is new lies on top of all there is
        const size_t first = m_shown.size();
        QRegion changed;
        for (size_t i = first; i < drawings.size(); ++i) {
            m_shown.push_back({drawings[i], areaOf(drawings[i])});
            changed += m_shown.back().area;
        }
        paint({}, first);
        return std::exchange(m_isFresh, false) ? QRegion(m_place.area) : changed;
    }
    const QRegion changed = takeOver(drawings);
    if (!changed.isEmpty())
        paint(changed, 0);
    return changed;
}

// Paints the annotations from `first` on. A region is cleared to the ground first and nothing outside it is touched.
void AnnotationLayer::paint(const QRegion &region, size_t first) {
    if (first >= m_shown.size() && region.isEmpty())
        return;
    QPainter painter(&m_image);
    painter.translate(-m_place.area.topLeft());
    if (!region.isEmpty()) {
        painter.setClipRegion(region);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        for (const QRect &rect : region)
            painter.drawImage(rect, m_ground, rect.translated(-m_place.area.topLeft()));
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    painter.scale(m_place.scale, m_place.scale);
    for (size_t i = first; i < m_shown.size(); ++i) {
        const Shown &shown = m_shown[i];
        if (!shown.area.isEmpty() && (region.isEmpty() || region.intersects(shown.area)))
            renderDrawing(painter, shown.path, pointsIn(shown.path, m_place.canvas), false);
    }
}

} // namespace tavrine
