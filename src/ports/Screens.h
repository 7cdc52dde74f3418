#pragma once

#include "base/Date.h"

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class Time;

/// One screen. Geometry throughout is in points; the origin of the plane is the bottom left corner of the first
/// screen, and y grows upwards.
struct Screen {
    quint32 number = 0; ///< names the screen while it is connected
    QString localizedName;
    QRectF frame;
    QRectF visibleFrame; ///< the frame without task bars and the like
    double scale = 1.0;  ///< device pixels per point
    bool operator==(const Screen &) const = default;
};

/// Edges of such rectangles: `QRectF` calls the lower edge its top.
[[nodiscard]] inline double minY(const QRectF &rect) {
    return rect.y();
}
[[nodiscard]] inline double maxY(const QRectF &rect) {
    return rect.y() + rect.height();
}

/// The pointer at one moment.
struct PointerReading {
    QPointF location;
    quint32 pressedButtons = 0; ///< bit 0 is the left button, bit 1 the right one, bit 2 the middle one
    bool operator==(const PointerReading &) const = default;
};

/// Looks at the pointer again and again, beside the main thread. Destroying it ends that: its handler is not called
/// again.
class PointerWatch {
public:
    virtual ~PointerWatch() = default;
    /// When it looked last.
    [[nodiscard]] virtual Date lastLook() const = 0;
    /// Whether looks that find nothing new are told of as well, one every interval. They are not, until this says so.
    virtual void setTellsAll(bool tellsAll) = 0;
};

/// The screens of the desktop and the pointer on them. Lives on the main thread, as long as the process.
class Screens {
public:
    /// Keeps a listener; releasing it ends the listening.
    using Token = std::shared_ptr<void>;

    virtual ~Screens() = default;

    /// All screens, that at the origin first. Empty without any.
    [[nodiscard]] virtual QList<Screen> screens() const = 0;

    /// The screen of the window that has the keyboard; with none, the one under the pointer, else the first. None
    /// only when there is no screen.
    [[nodiscard]] virtual std::optional<Screen> mainScreen() const = 0;

    /// A rectangle of this plane where the toolkit has it, whose own plane starts at the top.
    [[nodiscard]] virtual QRectF toolkitRect(const QRectF &rect) const = 0;

    /// Where the pointer is, and what is pressed. Cheap enough to be asked many times a second.
    [[nodiscard]] virtual PointerReading pointer() const = 0;
    [[nodiscard]] QPointF mouseLocation() const { return pointer().location; }
    [[nodiscard]] quint32 pressedMouseButtons() const { return pointer().pressedButtons; }

    /// Looks at the pointer at once and then every `interval`, and has `handler` called by `time` after the first look
    /// and after each that finds place or buttons changed. While nothing changes the main thread does nothing; and the
    /// looks may be a second apart then, where the system tells when the pointer is in use again.
    [[nodiscard]] virtual std::unique_ptr<PointerWatch> watchPointer(Time &time, Seconds interval,
                                                                     std::function<void()> handler) = 0;

    /// Calls `handler` after screens came, went, moved, or changed their visible frame.
    [[nodiscard]] virtual Token onChange(std::function<void()> handler) = 0;
};

} // namespace tavrine
