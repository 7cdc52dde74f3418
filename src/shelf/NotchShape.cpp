#include "shelf/NotchShape.h"

#include <algorithm>

namespace tavrine {

QPainterPath notchOutline(const QSizeF &size) {
    QPainterPath path;
    const double width = size.width();
    const double height = size.height();
    if (width <= 4 * notchShoulder || height <= 0)
        return path;
    const double shoulder = std::min(notchShoulder, height / 3);
    const double corner = std::min({20.0, height * 0.42, height - shoulder});
    const double left = notchShoulder;
    const double right = width - notchShoulder;
    // The control points that make a quarter of a circle out of a cubic curve.
    const double pull = corner * 0.5523;
    path.moveTo(0, 0);
    path.quadTo(left, 0, left, shoulder);
    path.lineTo(left, height - corner);
    path.cubicTo(left, height - corner + pull, left + corner - pull, height, left + corner, height);
    path.lineTo(right - corner, height);
    path.cubicTo(right - corner + pull, height, right, height - corner + pull, right, height - corner);
    path.lineTo(right, shoulder);
    path.quadTo(right, 0, width, 0);
    path.closeSubpath();
    return path;
}

} // namespace tavrine
