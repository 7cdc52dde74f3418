#pragma once

#include "adapters/wayland/WaylandConnection.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <wayland-client.h>

namespace tavrine {

/// What a class has of a connection to the Wayland compositor: a registry and, where others have part in the
/// connection, a queue of its own.
///
/// Owned by who uses it; one thread. All waiting is bounded. Needs no toolkit and no event loop. Without a compositor
/// it is there but not open; once the compositor has ended the connection, or has been told something that it does not
/// bear, `isOpen` is false for good and every call is harmless.
///
/// What is made through a link that has part in a connection is destroyed before the link: the connection may stay.
class WaylandLink {
public:
    using Wait = std::chrono::milliseconds;
    /// A healthy compositor answers in well under a millisecond, but a busy machine may keep it waiting for seconds,
    /// and who gives up says that there is none. One that hangs for longer shows nothing of this program either.
    static constexpr Wait usualWait{10'000};

    /// What the compositor offers, as it names it.
    struct Global {
        std::uint32_t name = 0;
        std::string interface;
        std::uint32_t version = 0;
    };

    /// Connects to $WAYLAND_DISPLAY and learns what is offered. Once `isGivenUp` is set, on any thread, no answer is
    /// waited for any more: whoever waits for the thread that has this link may not have that long.
    explicit WaylandLink(Wait longest = usualWait, const std::atomic<bool> *isGivenUp = nullptr);
    /// The same with part in a connection; null for one to itself. Without an answer only this link is closed.
    explicit WaylandLink(std::shared_ptr<WaylandConnection> connection, Wait longest = usualWait);
    ~WaylandLink();
    WaylandLink(const WaylandLink &) = delete;
    WaylandLink &operator=(const WaylandLink &) = delete;

    [[nodiscard]] bool isOpen() const { return m_registry && m_connection->isOpen(); }
    /// Once it is closed: why, in words for a person who looks for the fault.
    [[nodiscard]] std::string whyClosed() const;
    [[nodiscard]] wl_display *display() const { return m_connection ? m_connection->display() : nullptr; }
    [[nodiscard]] int descriptor() const { return m_registry ? wl_display_get_fd(display()) : -1; }

    [[nodiscard]] const std::vector<Global> &globals() const { return m_globals; }
    /// The first of that kind; null for none.
    [[nodiscard]] const Global *find(std::string_view interface) const;
    /// Called for what comes and goes after the beginning, as screens do.
    void setOnGlobal(std::function<void(const Global &global, bool isThere)> onGlobal);

    /// The first that is offered of the kind, in the offered version or `highest`, whichever is lower. Null for none.
    /// `interface` is what the scanner made: `wl_seat_interface`.
    template <class Proxy>
    [[nodiscard]] Proxy *bind(const wl_interface &interface, std::uint32_t highest) {
        const Global *const global = find(interface.name);
        return global ? bind<Proxy>(*global, interface, highest) : nullptr;
    }
    template <class Proxy>
    [[nodiscard]] Proxy *bind(const Global &global, const wl_interface &interface, std::uint32_t highest) {
        return static_cast<Proxy *>(bindAs(global, interface, highest));
    }

    /// Is done when the compositor has done all that it was told before. Of an open link alone.
    [[nodiscard]] wl_callback *sync() const;
    /// Sends what the compositor takes at once; false when something is left, which goes with the next call.
    bool flush();
    /// Waits until the compositor has done all that it was told, and calls the handlers of what it sent. False when it
    /// did not in time, or was given up.
    bool finish(Wait longest = usualWait);
    /// Calls the handlers of what has arrived, and sends what they ask for; waits for the first of it for `longest` at
    /// most, or until `wake`, a descriptor, can be read. False when the connection is gone.
    bool dispatch(Wait longest = Wait{0}, int wake = -1);

private:
    using Clock = std::chrono::steady_clock;

    void open(Wait longest);
    void close();
    [[nodiscard]] int prepareRead() const;
    int callHandlers() const;
    [[nodiscard]] bool waitForEvents(Clock::time_point end, int wake);
    void *bindAs(const Global &global, const wl_interface &interface, std::uint32_t highest);
    void added(const Global &global);
    void removed(std::uint32_t name);

    const std::atomic<bool> *const m_isGivenUp;      ///< null where it never is
    std::shared_ptr<WaylandConnection> m_connection; ///< null without an answer
    wl_event_queue *m_queue = nullptr;               ///< null for the connection's own, in a connection of one link
    wl_display *m_sameOnQueue = nullptr;             ///< makes what belongs to the queue; null with it
    wl_registry *m_registry = nullptr;               ///< null while it is closed
    std::vector<Global> m_globals;
    std::function<void(const Global &, bool)> m_onGlobal;
};

} // namespace tavrine
