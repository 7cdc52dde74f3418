#pragma once

#include <QRect>

#include <cstdint>
#include <optional>
#include <vector>

#include <xcb/xcb.h>

namespace tavrine {

/// The top-level windows of a screen, from the lowest to the uppermost, as the server's notices tell of them. A value
/// without a connection; begun with what the server said and followed from there.
class WindowStack {
public:
    struct Window {
        xcb_window_t id = XCB_WINDOW_NONE;
        QRect area; ///< of the root window, the window's border included
        int border = 0;
        bool isMapped = false;
        /// Another one whenever its contents are kept somewhere else: it was mapped anew or is of another size.
        std::uint64_t content = 0;
    };
    /// A notice's effect: the window that it was about, and all of the screen where it may show.
    struct Change {
        xcb_window_t window = XCB_WINDOW_NONE;
        QRect area;
        /// It lies over a window that is gone: the notice is older than what the stack began with, which is to be begun
        /// anew.
        bool isOrderLost = false;
    };

    explicit WindowStack(xcb_window_t root = XCB_WINDOW_NONE) : m_root(root) {}

    /// Before it is begun anew. Contents that were known are others then.
    void clear() { m_windows.clear(); }
    /// On top of all others; one that is there already is forgotten first.
    void add(Window window);
    /// None when the event is no notice about the stack.
    [[nodiscard]] std::optional<Change> apply(const xcb_generic_event_t &event);

    [[nodiscard]] const std::vector<Window> &windows() const { return m_windows; }
    [[nodiscard]] const Window *find(xcb_window_t id) const;

private:
    using Place = std::vector<Window>::iterator;
    [[nodiscard]] Place place(xcb_window_t id);
    std::optional<Change> remove(xcb_window_t id);
    std::optional<Change> configure(const xcb_configure_notify_event_t &notice);
    std::optional<Change> circulate(const xcb_circulate_notify_event_t &notice);
    std::optional<Change> map(xcb_window_t id, bool isMapped);

    xcb_window_t m_root;
    std::vector<Window> m_windows;
    std::uint64_t m_contents = 0;
};

} // namespace tavrine
