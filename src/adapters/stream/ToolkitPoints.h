#pragma once

#include <QPointF>
#include <QRect>
#include <QSize>

class QScreen;

namespace tavrine::toolkitPoints {

// The toolkit's points and the compositor's. Both are one where text is as large as usual; where the person wants it
// larger, the toolkit's are larger by that factor, and its screens have fewer of them. Main thread.

/// The compositor's points in one of the toolkit's. Null for no screen: 1.
[[nodiscard]] double factor(const QScreen *screen);

/// Within one window or screen, rounded as the toolkit rounds its windows. Nothing that is there becomes nothing.
[[nodiscard]] QPoint toCompositor(QPoint place, double factor);
[[nodiscard]] QSize toCompositor(QSize size, double factor);
[[nodiscard]] QRect toCompositor(const QRect &rect, double factor);
/// Its edges rounded, so that what ends with the screen still does.
[[nodiscard]] QRect fromCompositor(const QRect &rect, double factor);

/// Where a screen is on the compositor's plane. Empty for no screen.
[[nodiscard]] QRect onCompositorsPlane(const QScreen *screen);
/// A place on the compositor's plane, on the toolkit's.
[[nodiscard]] QPointF fromCompositorsPlane(QPointF place);

} // namespace tavrine::toolkitPoints
