#pragma once

#include "base/Descriptor.h"

#include <chrono>
#include <vector>

namespace tavrine {

/// One frozen screen at a time, over all programs of ours in a session: who freezes next ends the one before and waits
/// until that is off the screen, so that no picture shows another one's overlay.
///
/// The turn is a socket of this user and this compositor, without a file: it ends with its process. A call there asks
/// for the turn, and the line hangs up when the caller may have it. A program of ours that does not hang up is killed:
/// its frozen screen would lie over the next one and keep the keyboard.
class WaylandTurn {
public:
    /// Takes the turn; waits for the other one, half a second at most.
    WaylandTurn();

    /// Becomes readable when another one asks; -1 for a turn that could not be had.
    [[nodiscard]] int descriptor() const { return m_line.number(); }
    /// True when another one has asked for the turn.
    [[nodiscard]] bool isLost();

private:
    [[nodiscard]] bool take();
    /// Waits until it hangs up, or ends it.
    static void askOther(std::chrono::steady_clock::time_point until);

    Descriptor m_line;
    std::vector<Descriptor> m_callers; ///< they hear the end of the turn by the end of these
};

} // namespace tavrine
