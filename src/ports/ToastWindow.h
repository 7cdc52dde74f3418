#pragma once

#include "base/Date.h"

#include <QPointF>
#include <QSizeF>
#include <QString>

#include <memory>

namespace tavrine {

/// What a toast reads, and the window that it stands in.
struct ToastDescription {
    QString message;
    QString icon; ///< a symbol
    QSizeF size{250, 60};
    int level = 3;                    ///< above normal windows
    quint32 collectionBehavior = 257; ///< on every desktop, and beside a full-screen window
    bool operator==(const ToastDescription &) const = default;
};

/// A toast on the screen. Lives on the main thread; destroying it closes the window at once.
///
///  1. It never takes the keyboard, and its size never changes: a message that is too long is cut.
///  2. Places are in points, from the bottom left of the plane of the screens, and name the window's bottom left.
class ToastWindow {
public:
    virtual ~ToastWindow() = default;

    [[nodiscard]] virtual QPointF frameOrigin() const = 0;
    virtual void setFrameOrigin(QPointF origin) = 0;
    /// 0 is invisible, 1 opaque.
    virtual void setAlpha(double alpha) = 0;
    virtual void orderFront() = 0;

    /// Goes from what is now to `alpha` and `origin` within `duration`, in place of an animation under way.
    virtual void animate(double alpha, QPointF origin, Seconds duration) = 0;
};

/// Makes toasts.
class ToastWindows {
public:
    virtual ~ToastWindows() = default;
    /// A window that is not on the screen yet, at the place that new windows have.
    [[nodiscard]] virtual std::unique_ptr<ToastWindow> makeToastWindow(const ToastDescription &description) = 0;
};

} // namespace tavrine
