#include "adapters/linux/ScreenPlane.h"

#include <QGuiApplication>
#include <QScreen>

namespace tavrine {

QPointF flippedPoint(QPointF point) {
    const QScreen *first = QGuiApplication::primaryScreen();
    const QRectF origin = first ? QRectF(first->geometry()) : QRectF();
    return {point.x() - origin.x(), origin.y() + origin.height() - point.y()};
}

QRectF flippedRect(const QRectF &rect) {
    const QPointF corner = flippedPoint({rect.x(), rect.y() + rect.height()});
    return {corner, rect.size()};
}

} // namespace tavrine
