#pragma once

#include <QString>

namespace tavrine {

/// Posts keyboard events as if they were typed. Lives on the main thread.
///
///  1. Only the modifiers in the flags count at the receiver, whatever the person holds; what is held stays held
///     afterwards.
///  2. Command-V is the paste chord of the program that has the keyboard, and pastes there exactly once.
///  3. Where events cannot be posted, nothing happens.
///  4. While the keyboard is held for a window that is to come, as after a hot key, what is typed would go there. Then
///     a key-down with modifiers is not typed, and `isHeldBack` says so until the next one. It is the same while the
///     desktop does not say who has the keyboard, and while it is still to give it to the window that it names active.
///  5. Trying again does no harm: of all tries into a keyboard that stays held, at most one modifier comes to whoever
///     has the keyboard in the end, down and up at once, so that what the person types meanwhile stays what it is.
class EventPoster {
public:
    virtual ~EventPoster() = default;

    /// `keyCode` is a virtual key code, `flags` are those of `modifierFlag`. Every key-down is followed by its key-up.
    virtual void postKeyboardEvent(int keyCode, bool isKeyDown, quint32 flags) = 0;
    /// Whether the last key-down was not typed, and may be a little later.
    [[nodiscard]] virtual bool isHeldBack() const { return false; }
    /// Why the last key-down was not typed, in words for a person who looks for the fault. Empty when it was, and where
    /// nobody knows.
    [[nodiscard]] virtual QString failure() const { return {}; }
};

} // namespace tavrine
