#pragma once

#include "adapters/x11/XcbLink.h"

namespace tavrine {

/// One frozen screen at a time, over all programs of ours: who freezes next ends the one before and waits until the
/// windows that it covered have had time to paint themselves, so that no picture shows another one's overlay.
///
/// The turn is an X selection; the moment at which the last one ended stands on the root window.
class ScreenTurn {
public:
    /// Takes the turn; may wait for some tenths of a second when another one has just ended or must end.
    explicit ScreenTurn(XcbLink &link);
    ScreenTurn(const ScreenTurn &) = delete;
    ScreenTurn &operator=(const ScreenTurn &) = delete;

    /// True for the notice that another one took the turn.
    [[nodiscard]] bool isLostBy(const xcb_generic_event_t &event) const;

    /// To be called when the overlay is off the screen.
    void noteEnd();

private:
    void waitForOther(xcb_window_t other);
    void waitForRepaint();

    XcbLink &m_link;
    xcb_atom_t m_selection;
    xcb_atom_t m_endedAt;
    xcb_window_t m_window;
};

} // namespace tavrine
