#include "adapters/frozen/MagnifierGeometry.h"

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

// At scale 1. A cell of 10 shows a pixel large enough to count; the gap leaves the pointer's cross free.
constexpr double cellSide = 10;
constexpr double gapToPixel = 18;
constexpr double gapToLabel = 8;
constexpr double marginPerCell = 1.6; // rim and shadow

int onAxis(int pixel, int length, int gap, int outward, int first, int last) {
    const int after = pixel + gap;
    const int before = pixel - gap - length + 1;
    const bool fitsAfter = after + length - 1 <= last;
    const bool fitsBefore = before >= first;
    const bool isAfter = outward > 0 ? fitsAfter || !fitsBefore : !fitsBefore && fitsAfter;
    return std::max(first, std::min(isAfter ? after : before, last - length + 1));
}

} // namespace

MagnifierGeometry MagnifierGeometry::place(QPoint pixel, const QRect &monitor, double scale, QSize label,
                                           QPoint outward) {
    MagnifierGeometry geometry;
    geometry.pixel = pixel;
    geometry.cell = std::max(1, static_cast<int>(std::lround(cellSide * scale)));
    const int diameter = geometry.cell * cells;
    const int labelGap = label.isEmpty() ? 0 : static_cast<int>(std::lround(gapToLabel * scale));
    const QSize size(std::max(diameter, label.width()), diameter + labelGap + label.height());
    const int gap = static_cast<int>(std::lround(gapToPixel * scale));
    const QPoint corner(onAxis(pixel.x(), size.width(), gap, outward.x(), monitor.left(), monitor.right()),
                        onAxis(pixel.y(), size.height(), gap, outward.y(), monitor.top(), monitor.bottom()));
    geometry.circle = {corner.x() + (size.width() - diameter) / 2, corner.y(), diameter, diameter};
    geometry.label = {corner.x() + (size.width() - label.width()) / 2, corner.y() + diameter + labelGap, label.width(),
                      label.height()};
    return geometry;
}

QRect MagnifierGeometry::bounds() const {
    const int margin = static_cast<int>(std::ceil(cell * marginPerCell));
    return circle.united(label).adjusted(-margin, -margin, margin, margin);
}

} // namespace tavrine
