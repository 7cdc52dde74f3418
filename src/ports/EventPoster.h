#pragma once

#include <QtGlobal>

namespace tavrine {

/// Posts keyboard events as if they were typed. Lives on the main thread.
///
///  1. Only the modifiers in the flags count at the receiver, whatever the person holds; what is held stays held
///     afterwards.
///  2. Command-V is the paste chord of the program that has the keyboard, and pastes there exactly once.
///  3. Where events cannot be posted, nothing happens.
class EventPoster {
public:
    virtual ~EventPoster() = default;

    /// `keyCode` is a virtual key code, `flags` are those of `modifierFlag`. Every key-down is followed by its key-up.
    virtual void postKeyboardEvent(int keyCode, bool isKeyDown, quint32 flags) = 0;
};

} // namespace tavrine
