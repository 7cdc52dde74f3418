#pragma once

#include <functional>
#include <memory>

namespace tavrine {

/// Drops every key of every keyboard, whoever it is for, from the moment at which it drops them until it is destroyed.
/// Lives on the main thread.
///
///  1. Modifiers, media keys, shortcuts of the desktop and of this program die as well. The pointer is free.
///  2. To the others all keys are up when it begins and when it ends, and locks and the layout are as they were: what
///     keys did to them meanwhile is taken back, what the person did by other means stays. So are the aids that keys
///     switch on, as a Shift that is pressed five times does. Where no program can set them, they stay as keys left
///     them.
///  3. The end of this process, however it comes, ends it. So do the machine's going to sleep and a lock of the
///     session, as far as anybody tells of them: the lock screen needs the keyboard.
class EventTap {
public:
    enum class State {
        waiting,  ///< another program holds the keyboard, for a second at most, or the desktop has not answered yet
        dropping, ///< in force; what somebody takes away meanwhile is taken back in a moment
        ended,    ///< it was not to be had in time, was taken away for good, or the desktop is gone; keys pass
        gaveWay,  ///< the machine goes to sleep or the session is locked, be it while it waited; keys pass
    };

    virtual ~EventTap() = default;
    [[nodiscard]] virtual State state() const = 0;
};

/// Where taps come from. Lives on the main thread, as long as the process.
class EventTaps {
public:
    virtual ~EventTaps() = default;

    /// False where the desktop lets no program have one, whatever the person allows.
    [[nodiscard]] virtual bool areThere() const { return true; }
    /// A tap, which drops keys at once unless it has to wait. Null where this program may not have one.
    /// `onChange` is called when its state changes later, never within the call; it may destroy the tap.
    [[nodiscard]] virtual std::unique_ptr<EventTap> create(std::function<void()> onChange) = 0;
};

} // namespace tavrine
