#pragma once

#include "adapters/x11/XcbClient.h"
#include "ports/ApplicationActivator.h"

#include <optional>

namespace tavrine {

/// Brings programs forward with the window manager's help, or, without one, by giving their window the keyboard.
///
/// Lives on the main thread, on a connection of its own. It asks as a pager does, on the person's behalf and with the
/// server's present time, so that a manager that keeps programs from pushing themselves forward has no reason to.
class X11ApplicationActivator final : public ApplicationActivator {
public:
    X11ApplicationActivator();

    [[nodiscard]] bool isRunning(const RunningApplication &application) const override;
    bool activate(const RunningApplication &application) override;
    /// Nothing: on this desktop a window takes the keyboard when it is shown, and the program has no part in it.
    void activateIgnoringOtherApps() override {}
    void bringForward(quint32 window) override;
    /// Minimises what the program has in the task bar; without a window manager gives the keyboard to nobody.
    void hide() override;

    /// A launcher started the program again, by the identifier that it gave that start; empty for none.
    void noteStartup(const QByteArray &startupId);

    /// Gives the window the keyboard.
    void activateWindow(xcb_window_t window);
    [[nodiscard]] bool hasWindowManager() const;
    [[nodiscard]] bool isComposited() const { return isCompositorRunning(m_client.link()); }
    /// The window that has the keyboard, 0 for none.
    [[nodiscard]] xcb_window_t focusedWindow() const;
    /// The server's present time.
    [[nodiscard]] quint32 serverTime();
    /// Gives the keyboard back to a window that had it, where no window manager does.
    void focusWindow(xcb_window_t window);

private:
    [[nodiscard]] xcb_window_t windowOf(const RunningApplication &application) const;
    [[nodiscard]] bool isThere(xcb_window_t window) const;
    void sendToRoot(xcb_window_t window, const char *message, const quint32 (&data)[5]);

    mutable XcbClient m_client; // asking reads from it
    xcb_window_t m_window = XCB_WINDOW_NONE;
    quint32 m_serverTime = 0;
    quint32 m_startupTime = 0; ///< of a start whose window has not come forward yet; 0 for none
};

} // namespace tavrine
