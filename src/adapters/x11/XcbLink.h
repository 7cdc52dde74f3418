#pragma once

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <xcb/xcb.h>

namespace tavrine {

/// What xcb hands out and wants freed.
struct XcbFree {
    void operator()(void *pointer) const { std::free(pointer); }
};
template <class T>
using XcbReply = std::unique_ptr<T, XcbFree>;
using XcbEvent = XcbReply<xcb_generic_event_t>;

/// A connection to the X server. Every other class that speaks to the server does it through one of these.
///
/// Owned by who uses it; one thread. Waiting for an answer is bounded, since another program may hold the server for
/// itself; connecting is not: Qt connects before all others and waits as well, and a class that went on without its
/// connection would be without it for good. Needs no toolkit and no event loop. Without a server it is there but not
/// open, and a connection that is lost makes every call harmless.
class XcbLink {
public:
    using Wait = std::chrono::milliseconds;
    static constexpr Wait forEver = Wait::max();

    /// Connects to $DISPLAY; a refusal is asked again, for some hundredths of a second.
    explicit XcbLink(Wait longestWait);
    ~XcbLink();
    XcbLink(const XcbLink &) = delete;
    XcbLink &operator=(const XcbLink &) = delete;

    [[nodiscard]] bool isOpen() const { return m_screen && !xcb_connection_has_error(m_connection); }
    [[nodiscard]] xcb_connection_t *connection() const { return m_connection; }
    [[nodiscard]] const xcb_screen_t &screen() const { return *m_screen; }
    [[nodiscard]] xcb_window_t root() const { return m_screen->root; }
    [[nodiscard]] int screenNumber() const { return m_screenNumber; }
    [[nodiscard]] int descriptor() const { return xcb_get_file_descriptor(m_connection); }
    [[nodiscard]] xcb_window_t newId() const { return xcb_generate_id(m_connection); }

    /// The reply to a request that was sent. Null for a refusal (a window that is gone) and for a server that did not
    /// answer in time; only the latter sets `isLate`.
    template <class Reply, class Cookie>
    [[nodiscard]] XcbReply<Reply> reply(Cookie cookie) {
        return XcbReply<Reply>(static_cast<Reply *>(await(cookie.sequence)));
    }

    /// True when a reply was late since the last question.
    [[nodiscard]] bool takeIsLate() { return std::exchange(m_isLate, false); }

    /// Whether the server refused a request that was sent in its checked form. None when it did not answer in time.
    /// Of several requests, the first question pays the round trip.
    [[nodiscard]] std::optional<bool> isRefused(xcb_void_cookie_t cookie);

    /// Waits until the server has done all that it was sent. False when it did not in time.
    bool finish();
    void flush() { xcb_flush(m_connection); }

    /// What the server says of an extension. Null when it has none, or did not answer in time: then it may be asked
    /// again.
    [[nodiscard]] const xcb_query_extension_reply_t *extension(xcb_extension_t &extension);

    /// The atom of that name; made when there is none, and asked for once. 0 when the server did not answer in time.
    [[nodiscard]] xcb_atom_t atom(const std::string &name);

    /// 0 when nobody owns it, or the server did not answer in time.
    [[nodiscard]] xcb_window_t selectionOwner(xcb_atom_t selection);

    /// Reads of a property start with `ask`, so that several can be under way, and end with one of the others. What is
    /// absent, of another shape or on a window that is gone is empty; what is longer than asked for is cut.
    static constexpr std::uint32_t usualBytes = 1024;
    [[nodiscard]] xcb_get_property_cookie_t ask(xcb_window_t window, xcb_atom_t property,
                                                std::uint32_t longestBytes = usualBytes) const;
    [[nodiscard]] std::vector<std::uint32_t> words(xcb_get_property_cookie_t cookie);
    [[nodiscard]] std::string text(xcb_get_property_cookie_t cookie);

    /// The next event that has arrived; none when there is no more. Never waits.
    [[nodiscard]] XcbEvent nextEvent() {
        return m_next ? std::move(m_next) : XcbEvent{xcb_poll_for_event(m_connection)};
    }
    /// Whether one was read along with an answer: the socket tells of it no more. Reads nothing itself.
    [[nodiscard]] bool hasReadEvent();
    /// Waits until something can be read, for `longest` at most.
    void waitForInput(Wait longest) const;

private:
    void *await(unsigned int sequence);

    int m_screenNumber = 0; // before the connection, whose making sets it
    xcb_connection_t *m_connection;
    xcb_screen_t *m_screen = nullptr;
    XcbEvent m_next; ///< taken out of xcb, which hides how many it has
    std::map<std::string, xcb_atom_t> m_atoms;
    Wait m_longestWait;
    bool m_isLate = false;
};

/// The kind of an event, whoever sent it. 0 is an error.
[[nodiscard]] inline int eventType(const xcb_generic_event_t &event) {
    return event.response_type & 0x7F;
}

/// An event as what its kind says it is.
template <class T>
[[nodiscard]] const T &eventAs(const xcb_generic_event_t &event) {
    return reinterpret_cast<const T &>(event);
}

/// Whether a compositor runs, that is, whether windows can let others show through: one that runs owns the selection
/// that is named after its screen.
[[nodiscard]] xcb_atom_t compositorSelection(XcbLink &link);
[[nodiscard]] bool isCompositorRunning(XcbLink &link);

} // namespace tavrine
