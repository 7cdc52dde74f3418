#include "adapters/stream/ToolkitPoints.h"

#include <QGuiApplication>
#include <QScreen>
#include <qpa/qplatformscreen.h>

#include <algorithm>

#include <private/qhighdpiscaling_p.h>

namespace tavrine::toolkitPoints {
double factor(const QScreen *screen) {
    return screen && screen->handle() ? QHighDpiScaling::factor(screen) : 1;
}

QPoint toCompositor(QPoint place, double factor) {
    return place * factor;
}

QSize toCompositor(QSize size, double factor) {
    const QSize scaled = size * factor;
    return {size.width() > 0 ? std::max(1, scaled.width()) : scaled.width(),
            size.height() > 0 ? std::max(1, scaled.height()) : scaled.height()};
}

QRect toCompositor(const QRect &rect, double factor) {
    return {toCompositor(rect.topLeft(), factor), toCompositor(rect.size(), factor)};
}

QRect fromCompositor(const QRect &rect, double factor) {
    const QPoint first(qRound(rect.x() / factor), qRound(rect.y() / factor));
    const QPoint beyond(qRound((rect.x() + rect.width()) / factor), qRound((rect.y() + rect.height()) / factor));
    return {first, QSize(beyond.x() - first.x(), beyond.y() - first.y())};
}

QRect onCompositorsPlane(const QScreen *screen) {
    return screen && screen->handle() ? screen->handle()->geometry() : QRect();
}

QPointF fromCompositorsPlane(QPointF place) {
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens) {
        const QRectF told(onCompositorsPlane(screen));
        if (told.contains(place)) // the toolkit leaves each screen's corner where it is
            return told.topLeft() + (place - told.topLeft()) / factor(screen);
    }
    return place;
}

} // namespace tavrine::toolkitPoints
