#pragma once

#include "adapters/wayland/WaylandLink.h"

#include <QPoint>
#include <QRect>

#include <initializer_list>
#include <memory>

#include <linux/input-event-codes.h>

namespace tavrine::testing {

/// The person at the keyboard and the mouse of a Wayland session: a client of its own with a virtual keyboard and a
/// virtual pointer on compositors of wlroots, with KWin's fake input there. Keys have the kernel's numbers, `KEY_V`,
/// and mean what they do on an American keyboard; places are those of the whole layout of outputs, in logical pixels.
///
/// Each call returns once the compositor has taken it. A seat has a keyboard and a pointer from the first hand on: make
/// it before the programs that are to hear of it.
class WaylandHand {
public:
    WaylandHand();
    ~WaylandHand();
    WaylandHand(const WaylandHand &) = delete;
    WaylandHand &operator=(const WaylandHand &) = delete;

    /// False where the compositor offers no such thing.
    [[nodiscard]] bool isThere() const;

    void down(int key);
    void up(int key);
    void tap(int key);
    /// Presses the keys in order and releases them in the opposite order.
    void chord(std::initializer_list<int> keys);
    /// Letters, digits, blanks and the signs - ; and others of an American keyboard that need no thought.
    void type(const char *text);

    void move(QPoint place);
    void press(int button = BTN_LEFT);
    void release(int button = BTN_LEFT);
    void click(QPoint place, int button = BTN_LEFT);
    /// With the button down from the one to the other, by way of a few places in between.
    void drag(QPoint from, QPoint to);
    /// The first half of that: the button stays down at the end.
    void dragAndHold(QPoint from, QPoint to);

    /// All outputs together.
    [[nodiscard]] QRect layout();

private:
    class Device;
    class VirtualDevices;
    class FakeInput;

    WaylandLink m_link;
    std::unique_ptr<Device> m_device;
};

} // namespace tavrine::testing
