#include "capture/editor/CropSelection.h"

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

bool isNumber(QPointF point) {
    return std::isfinite(point.x()) && std::isfinite(point.y());
}

QPointF fraction(QPointF place, QSizeF size) {
    return {std::clamp(place.x(), 0.0, size.width()) / size.width(),
            std::clamp(place.y(), 0.0, size.height()) / size.height()};
}

} // namespace

void CropSelection::drag(QPointF start, QPointF present, QSizeF size) {
    if (!(size.width() > 0 && size.height() > 0) || !isNumber(start) || !isNumber(present))
        return;
    m_start = fraction(start, size);
    m_end = fraction(present, size);
}

void CropSelection::clear() {
    m_start.reset();
    m_end.reset();
}

QRectF CropSelection::rect() const {
    if (isEmpty())
        return {0, 0, 1, 1};
    return {std::min(m_start->x(), m_end->x()), std::min(m_start->y(), m_end->y()),
            std::max(std::abs(m_end->x() - m_start->x()), smallestPart),
            std::max(std::abs(m_end->y() - m_start->y()), smallestPart)};
}

} // namespace tavrine
