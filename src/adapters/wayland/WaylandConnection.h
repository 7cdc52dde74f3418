#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <wayland-client.h>

namespace tavrine {

/// The way to the compositor of $WAYLAND_DISPLAY that one link has to itself, or that several links of one thread
/// share.
///
/// KWin reads and hashes the whole program for each connection of an installed one before it says what it offers, which
/// takes it about as long as to show a panel, and nobody else is served meanwhile: what one thread has open for long
/// goes over one connection. Owned by its links; threads share none, since whoever waits in one would sleep over what
/// another has read for it.
///
/// Each of several links has a queue of its own: while one waits for an answer, the handlers of the others are not
/// called. What it has read for them is told by `onRead`; who shares a connection gives each link its turn then. An end
/// of the connection is the end of all.
class WaylandConnection {
public:
    WaylandConnection();
    ~WaylandConnection();
    WaylandConnection(const WaylandConnection &) = delete;
    WaylandConnection &operator=(const WaylandConnection &) = delete;

    [[nodiscard]] bool isOpen() const { return m_display && wl_display_get_error(m_display) == 0; }
    /// Once it is closed: why, in words for a person who looks for the fault.
    [[nodiscard]] std::string whyClosed() const;
    [[nodiscard]] wl_display *display() const { return m_display; }

    /// Called whenever something was read, within the wait for it.
    void setOnRead(std::function<void()> onRead) { m_onRead = std::move(onRead); }

private:
    friend class WaylandLink;

    [[nodiscard]] wl_event_queue *makeQueue();
    void wasRead() const {
        if (m_onRead)
            m_onRead();
    }

    wl_display *m_display;
    /// Also those of links that are gone: the compositor may still tell something that belongs there.
    std::vector<wl_event_queue *> m_queues;
    std::function<void()> m_onRead;
};

} // namespace tavrine
