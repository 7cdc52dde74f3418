#pragma once

#include <QPoint>

#include <functional>
#include <memory>

namespace tavrine {

class Screens;
class SerialQueue;

/// Where the tray item is that was just pressed, in the toolkit's plane. Main thread; copies are one and the same.
///
/// A bar tells places within itself, or none. But whoever has clicked has the pointer there, at an edge of a screen.
/// Where it is not, as after a press by the keyboard, the item is taken to be at the end of the bar: at the right of
/// one above or below, at the lower end of one at a side. Without a bar it is at the upper right.
///
/// A button that is still held keeps the pointer with the bar: the answer comes when it is let go, or after a second.
/// Further presses until then are the same one.
class TrayPlace {
public:
    /// `screens` outlives it.
    explicit TrayPlace(const Screens &screens);

    /// Calls `found` in a later turn, unless this and its copies are gone by then.
    void operator()(std::function<void(QPoint)> found) const;

private:
    const Screens &m_screens;
    std::shared_ptr<std::unique_ptr<SerialQueue>> m_queue; ///< one while an answer is awaited
};

} // namespace tavrine
