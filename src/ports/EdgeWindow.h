#pragma once

#include "ports/PanelWindow.h"

#include <QPainterPath>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

class QWidget;

namespace tavrine {

/// What a window at the edge of a screen is, for the desktop.
struct EdgeWindowDescription {
    QString title;
    QSizeF largestSize; ///< no frame will be larger
    int level = windowLevel::floating;
    quint32 collectionBehavior = 0;
    /// What of a frame of this size is drawn, from its top left corner, in points: the shape of the window where the
    /// desktop cannot show one window through another.
    std::function<QPainterPath(const QSizeF &)> outline;
};

/// A window that lies at the upper edge of a screen over everything else, panels of the desktop and full-screen
/// programs included, and is in nobody's way. Lives on the main thread; its owner is who made it.
///
///  1. It has no frame, is on every desktop and in no task bar, pager, overview or window switcher, and never has the
///     keyboard unless `takeKeyboard` gave it.
///  2. While it ignores mouse events, clicks, wheels and drags reach what lies below as if it were not there. That may
///     change while another program's drag goes on, and the drag sees it at once.
///  3. Frames are in points with the origin at the bottom left, as `Screens` tells them. `frame` is where it goes, and
///     where it takes the mouse; on the screen an animated change arrives there within its duration, eased in and out.
///  4. A panel of this program that gets the keyboard lies above it until it goes, or this window is called.
///  5. The content is as large as what is shown of the window at any moment, and laid out for no more than that.
class EdgeWindow {
public:
    virtual ~EdgeWindow() = default;

    [[nodiscard]] virtual qint64 windowNumber() const = 0;
    [[nodiscard]] virtual bool isVisible() const = 0;
    [[nodiscard]] virtual QRectF frame() const = 0;
    /// A duration of 0 moves it at once.
    virtual void setFrame(const QRectF &frame, std::chrono::milliseconds duration) = 0;
    [[nodiscard]] virtual bool ignoresMouseEvents() const = 0;
    virtual void setIgnoresMouseEvents(bool ignores) = 0;

    /// Shows it above all others and leaves the keyboard where it is.
    virtual void orderFrontRegardless() = 0;
    /// The same without being called for, against whatever put it down: floating windows of this program that came
    /// after it stay above.
    virtual void keepInFront() = 0;
    virtual void orderOut() = 0;
    /// Gives it the keyboard until `returnKeyboard`, which gives it back to where it was.
    virtual void takeKeyboard() = 0;
    virtual void returnKeyboard() = 0;

    /// The window takes the content over and destroys it with itself. Drops arrive at the content as the toolkit's
    /// events.
    virtual void setContentView(QWidget *content) = 0;
};

/// Makes such windows.
class EdgeWindows {
public:
    virtual ~EdgeWindows() = default;
    /// A window that is ordered out, ignores mouse events, and has no content.
    [[nodiscard]] virtual std::unique_ptr<EdgeWindow> makeEdgeWindow(const EdgeWindowDescription &description) = 0;
};

} // namespace tavrine
