#include "capture/editor/ImageZoom.h"

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

// The picture's place within `place`, from the middle of `place` on the picture: in the middle when it is smaller.
double clampedMiddle(double middle, double image, double place, double scale) {
    const double half = place / scale / 2;
    return image <= 2 * half ? image / 2 : std::clamp(middle, half, image - half);
}

} // namespace

void ImageZoom::setImageSize(QSizeF size) {
    m_imageSize = size;
    fit();
}

void ImageZoom::setPlace(QSizeF size) {
    m_place = size;
    clampMiddle();
}

double ImageZoom::fittingScale() const {
    if (m_imageSize.isEmpty() || m_place.isEmpty())
        return 1;
    const double wide = std::max(m_place.width() - 2 * margin, 1.0) / m_imageSize.width();
    // In a low place the pills may lie over it: little more than a dot is no picture.
    const double tall = std::max(m_place.height() - margin - bottomMargin, m_place.height() / 2) / m_imageSize.height();
    // Whole points of the picture: it would be blurred otherwise.
    const double ownSize =
        std::max(1.0, std::floor(smallestShown / std::max(m_imageSize.width(), m_imageSize.height())));
    return std::min({wide, tall, ownSize});
}

double ImageZoom::bounded(double scale) const {
    // Whatever the limits say, the scale that fits can be reached.
    const double least = std::min(smallest, fittingScale());
    const double most = std::max(largest, fittingScale());
    return std::clamp(scale, least, most);
}

double ImageZoom::scale() const {
    return m_isFit ? fittingScale() : m_scale;
}

// In the middle of the place, and higher only where the pills would lie over it.
QPointF ImageZoom::fittingCorner(QSizeF shown) const {
    const double left = (m_place.width() - shown.width()) / 2;
    const double top = (m_place.height() - shown.height()) / 2;
    return {left, std::min(top, std::max(m_place.height() - bottomMargin - shown.height(), margin))};
}

QPointF ImageZoom::presentMiddle() const {
    if (!m_isFit)
        return m_middle;
    const double by = fittingScale();
    return (QPointF(m_place.width() / 2, m_place.height() / 2) - fittingCorner(m_imageSize * by)) / by;
}

QRectF ImageZoom::imageRect() const {
    if (m_imageSize.isEmpty() || m_place.isEmpty())
        return {};
    const double by = scale();
    const QSizeF size = m_imageSize * by;
    const QPointF middle = presentMiddle();
    const QPointF corner(m_place.width() / 2 - middle.x() * by, m_place.height() / 2 - middle.y() * by);
    // On whole points: a canvas is a widget, and a picture that stands between two pixels is blurred.
    return {std::round(corner.x()), std::round(corner.y()), std::max(std::round(size.width()), 1.0),
            std::max(std::round(size.height()), 1.0)};
}

void ImageZoom::fit() {
    m_isFit = true;
}

void ImageZoom::zoomTo(double scale, QPointF anchor) {
    if (!std::isfinite(scale) || !(scale > 0) || m_imageSize.isEmpty() || m_place.isEmpty())
        return;
    const double before = this->scale();
    const double after = bounded(scale);
    const QPointF middle = presentMiddle();
    const QPointF fromMiddle = anchor - QPointF(m_place.width() / 2, m_place.height() / 2);
    m_middle = middle + fromMiddle / before - fromMiddle / after;
    m_scale = after;
    m_isFit = false;
    clampMiddle();
}

void ImageZoom::moveBy(QPointF distance) {
    if (m_isFit)
        return;
    m_middle -= distance / m_scale;
    clampMiddle();
}

void ImageZoom::clampMiddle() {
    if (m_isFit || m_imageSize.isEmpty() || m_place.isEmpty())
        return;
    m_middle = {clampedMiddle(m_middle.x(), m_imageSize.width(), m_place.width(), m_scale),
                clampedMiddle(m_middle.y(), m_imageSize.height(), m_place.height(), m_scale)};
}

} // namespace tavrine
