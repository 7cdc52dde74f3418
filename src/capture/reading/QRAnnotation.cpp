#include "capture/reading/QRAnnotation.h"

#include <algorithm>

namespace tavrine {
namespace {

constexpr double sideMargin = 100;
constexpr double bottomMargin = 18;
constexpr double underTheCode = 22;

} // namespace

bool isUrlForBubble(const QString &payload) {
    return payload.startsWith(QLatin1String("http://")) || payload.startsWith(QLatin1String("https://"));
}

QPointF bubbleCentre(const QRectF &boundingBox, const QSizeF &view) {
    const double w = view.width();
    const double h = view.height();
    const double middle = boundingBox.x() * w + boundingBox.width() * w * 0.5;
    const double x = w < 2 * sideMargin ? w / 2 : std::clamp(middle, sideMargin, w - sideMargin);
    const double top = (1 - (boundingBox.y() + boundingBox.height())) * h;
    return {x, std::min(top + boundingBox.height() * h + underTheCode, h - bottomMargin)};
}

} // namespace tavrine
