#pragma once

#include <memory>

#include <xcb/xcb.h>

class QRectF;
class QWindow;

namespace tavrine {

class XcbClient;

/// The order in which this program's windows lie, asked of the server on a connection of its own, which is made at the
/// first question; each is given up after a fifth of a second. Windows are those of the toolkit; what lies beside each
/// other are the frames that a window manager put round them. Main thread.
class X11Stacking {
public:
    X11Stacking();
    ~X11Stacking();
    X11Stacking(const X11Stacking &) = delete;
    X11Stacking &operator=(const X11Stacking &) = delete;

    /// The frame of the lowest of this program's other floating windows that lie above this one and meet the area, in
    /// the toolkit's points; none where none does, or when the server did not answer.
    [[nodiscard]] xcb_window_t lowestFrameAbove(const QWindow &window, const QRectF &area);
    /// The frame of a window; none for one that is gone, or when the server did not answer.
    [[nodiscard]] xcb_window_t frameOf(const QWindow &window);

private:
    [[nodiscard]] XcbClient &client();

    std::unique_ptr<XcbClient> m_client;
};

/// Whether it floats over the windows of programs, as panels do.
[[nodiscard]] bool isFloating(const QWindow &window);
/// Puts a window that has no frame right below a frame.
void stackBelow(const QWindow &window, xcb_window_t frame);

} // namespace tavrine
