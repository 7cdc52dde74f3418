#pragma once

#include "adapters/x11/XcbLink.h"

#include <chrono>

namespace tavrine {

/// One frozen screen at a time, over all programs of ours: who freezes next ends the one before and waits until the
/// windows that it covered have had time to paint themselves, so that no picture shows another one's overlay.
///
/// The turn is an X selection; the moment at which the last one ended stands on the root window.
class ScreenTurn {
public:
    /// Takes the turn, by which the other one ends. Waits for nobody.
    explicit ScreenTurn(XcbLink &link);
    ScreenTurn(const ScreenTurn &) = delete;
    ScreenTurn &operator=(const ScreenTurn &) = delete;

    /// How long the screen is still to be left alone, half a second in all; none when it may be frozen. To be asked
    /// again after that time.
    [[nodiscard]] std::chrono::milliseconds timeToWait();

    /// True for the notice that another one took the turn.
    [[nodiscard]] bool isLostBy(const xcb_generic_event_t &event) const;

    /// To be called when the overlay is off the screen.
    void noteEnd();

private:
    [[nodiscard]] bool isOtherGone();

    XcbLink &m_link;
    xcb_atom_t m_selection;
    xcb_atom_t m_endedAt;
    xcb_window_t m_window;
    xcb_window_t m_other = XCB_WINDOW_NONE; ///< who had the turn and is still there
    std::chrono::steady_clock::time_point m_otherDeadline;
};

} // namespace tavrine
