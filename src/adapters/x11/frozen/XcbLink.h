#pragma once

#include "adapters/x11/XcbClient.h"

#include <QRect>

#include <string>
#include <vector>

namespace tavrine {

/// A connection to the X server that works without an event loop, for what must be on the screen before one would run.
/// Owned by the session that uses it; one thread. Waiting for the server is bounded.
class XcbLink {
public:
    XcbLink();
    ~XcbLink();
    XcbLink(const XcbLink &) = delete;
    XcbLink &operator=(const XcbLink &) = delete;

    [[nodiscard]] bool isOpen() const { return m_screen && !xcb_connection_has_error(m_connection); }
    [[nodiscard]] xcb_connection_t *connection() const { return m_connection; }
    [[nodiscard]] const xcb_screen_t &screen() const { return *m_screen; }
    [[nodiscard]] xcb_window_t root() const { return m_screen->root; }
    [[nodiscard]] QRect rect() const { return {0, 0, m_screen->width_in_pixels, m_screen->height_in_pixels}; }
    [[nodiscard]] int screenNumber() const { return m_screenNumber; }
    [[nodiscard]] xcb_window_t newId() const { return xcb_generate_id(m_connection); }

    /// The reply to a request that was sent, two seconds of waiting at most: the server may be in another program's
    /// hands. Null for a refusal and for a server that did not answer.
    template <class Reply, class Cookie>
    [[nodiscard]] XcbReply<Reply> reply(Cookie cookie) {
        return XcbReply<Reply>(static_cast<Reply *>(await(cookie.sequence)));
    }

    [[nodiscard]] xcb_atom_t atom(const std::string &name);
    /// Up to a kilobyte of numbers of a property; empty when it is absent or of another shape.
    [[nodiscard]] std::vector<quint32> words(xcb_window_t window, xcb_atom_t property);
    /// Up to 64 KB of text of a property.
    [[nodiscard]] std::string text(xcb_window_t window, xcb_atom_t property);

    /// Waits until the server has done all that it was sent. False when it did not within two seconds.
    bool finish();

private:
    void *await(unsigned int sequence);

    xcb_connection_t *m_connection;
    xcb_screen_t *m_screen = nullptr;
    int m_screenNumber = 0;
};

} // namespace tavrine
