#pragma once

#include "base/Date.h"

#include <QString>

#include <functional>

namespace tavrine {

/// What the machine does not do while an assertion is held.
enum class PowerAssertionType {
    noDisplaySleep,    ///< the screen does not blank or lock by itself, nor does the machine suspend by itself
    noIdleSleep,       ///< the machine does not suspend by itself; the screen may blank
    preventSystemSleep ///< nor does it when it is asked to; one that applies on lid close holds with the lid closed too
};

/// Keeps the machine from sleeping. Lives on the main thread, as long as the process.
///
///  1. An assertion counts from `createWithName` on and is released by its number, answered or not. What it is good for
///     is what the machine does, whichever services of the desktop it takes.
///  2. The services answer later than a call returns, and one that hangs does not answer. So the result comes in a
///     later turn, `longestAnswer` after the call at most: success as soon as one service that can keep the promise has
///     taken it, else failure, and then nothing is held. It does not come at all for an assertion that was released.
///  3. While an assertion is held, a service that is started anew is asked again within a second, and so is one that
///     answers late.
///  4. A person who asks for the suspend gets it, but for the last type. A desktop that cannot tell the two apart may
///     refuse it for the second type as well.
///  5. Nothing is left behind by the end of the process, however it ends. No call waits for anybody.
class PowerAssertions {
public:
    static constexpr int success = 0;
    static constexpr Seconds longestAnswer{1.0};

    virtual ~PowerAssertions() = default;

    /// The new assertion's number, never 0, and on (level 255). People read `name` in lists of what keeps the machine
    /// awake. `created` gets `success` or the error.
    [[nodiscard]] virtual quint32 createWithName(PowerAssertionType type, const QString &name,
                                                 std::function<void(int result)> created) = 0;
    /// That closing the lid does not suspend the machine either. For an assertion whose result has come; whether the
    /// machine lets itself be told is not known.
    virtual void setAppliesOnLidClose(quint32 id) = 0;
    /// Nothing for a number that is not held.
    virtual void release(quint32 id) = 0;
};

} // namespace tavrine
