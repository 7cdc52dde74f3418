#include "adapters/x11/XcbLink.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <thread>

#include <poll.h>
#include <xcb/xcbext.h>

namespace tavrine {
namespace {

constexpr size_t maxKnownAtoms = 4096; // programs invent names of formats for ever

using Clock = std::chrono::steady_clock;

xcb_screen_t *screenOf(xcb_connection_t *connection, int number) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0 && number > 0; --number)
        xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

/// One at a time: the library below xcb has one buffer for the name of the file with the server's key, for all threads,
/// and threads connect while the main thread does.
xcb_connection_t *connectAlone(int &screenNumber) {
    static std::mutex theConnecting;
    const std::scoped_lock lock(theConnecting);
    return xcb_connect(nullptr, &screenNumber);
}

/// A server that has many at its door, or a machine that has no descriptor left at this moment, refuses one connection
/// and takes the next, and who asks for one gives up what it is for without it.
xcb_connection_t *connect(int &screenNumber) {
    constexpr int tries = 4;
    constexpr auto pause = std::chrono::milliseconds(10);
    xcb_connection_t *connection = connectAlone(screenNumber);
    for (int i = 1; i < tries && xcb_connection_has_error(connection) == XCB_CONN_ERROR; ++i) {
        xcb_disconnect(connection);
        std::this_thread::sleep_for(pause);
        connection = connectAlone(screenNumber);
    }
    return connection;
}

} // namespace

XcbLink::XcbLink(Wait longestWait) : m_connection(connect(m_screenNumber)), m_longestWait(longestWait) {
    if (!xcb_connection_has_error(m_connection))
        m_screen = screenOf(m_connection, m_screenNumber);
}

XcbLink::~XcbLink() {
    xcb_disconnect(m_connection);
}

void XcbLink::waitForInput(Wait longest) const {
    constexpr auto longestPoll = Wait(std::numeric_limits<int>::max());
    pollfd input{descriptor(), POLLIN, 0};
    ::poll(&input, 1, longest == forEver ? -1 : static_cast<int>(std::clamp(longest, Wait(0), longestPoll).count()));
}

void *XcbLink::await(unsigned int sequence) {
    const auto start = Clock::now();
    xcb_flush(m_connection);
    void *answer = nullptr;
    xcb_generic_error_t *error = nullptr;
    while (!xcb_poll_for_reply(m_connection, sequence, &answer, &error)) {
        // Rounded up: a wait of no time at all would turn in circles for the rest of a millisecond.
        const auto waited = std::chrono::floor<Wait>(Clock::now() - start);
        if (xcb_connection_has_error(m_connection) || waited >= m_longestWait) {
            xcb_discard_reply(m_connection, sequence);
            m_isLate = true;
            return nullptr;
        }
        waitForInput(m_longestWait == forEver ? forEver : m_longestWait - waited);
    }
    std::free(error);
    return answer;
}

std::optional<bool> XcbLink::isRefused(xcb_void_cookie_t cookie) {
    void *nothing = nullptr;
    xcb_generic_error_t *error = nullptr;
    // Only an answer to something later shows that a request without an answer was done.
    const auto isDone = [&] { return xcb_poll_for_reply(m_connection, cookie.sequence, &nothing, &error) != 0; };
    if (!isDone() && (!finish() || !isDone())) {
        xcb_discard_reply(m_connection, cookie.sequence);
        return std::nullopt;
    }
    const bool isRefused = error != nullptr;
    std::free(error);
    return isRefused;
}

bool XcbLink::hasReadEvent() {
    if (!m_next)
        m_next.reset(xcb_poll_for_queued_event(m_connection));
    return m_next != nullptr;
}

bool XcbLink::finish() {
    return reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(m_connection)) != nullptr;
}

const xcb_query_extension_reply_t *XcbLink::extension(xcb_extension_t &extension) {
    // xcb waits for this answer without end, so it is asked for only when it must be here.
    xcb_prefetch_extension_data(m_connection, &extension);
    if (!finish())
        return nullptr;
    const xcb_query_extension_reply_t *answer = xcb_get_extension_data(m_connection, &extension);
    return answer && answer->present ? answer : nullptr;
}

xcb_atom_t XcbLink::atom(const std::string &name) {
    if (const auto known = m_atoms.find(name); known != m_atoms.end())
        return known->second;
    const auto answer = reply<xcb_intern_atom_reply_t>(
        xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str()));
    if (!answer)
        return XCB_ATOM_NONE;
    if (m_atoms.size() >= maxKnownAtoms)
        m_atoms.clear();
    return m_atoms[name] = answer->atom;
}

xcb_window_t XcbLink::selectionOwner(xcb_atom_t selection) {
    const auto answer = reply<xcb_get_selection_owner_reply_t>(xcb_get_selection_owner(m_connection, selection));
    return answer ? answer->owner : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

xcb_get_property_cookie_t XcbLink::ask(xcb_window_t window, xcb_atom_t property, std::uint32_t longestBytes) const {
    return xcb_get_property(m_connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, longestBytes / 4);
}

std::vector<std::uint32_t> XcbLink::words(xcb_get_property_cookie_t cookie) {
    const auto answer = reply<xcb_get_property_reply_t>(cookie);
    if (!answer || answer->format != 32)
        return {};
    const auto *first = static_cast<const std::uint32_t *>(xcb_get_property_value(answer.get()));
    return {first, first + answer->value_len};
}

std::string XcbLink::text(xcb_get_property_cookie_t cookie) {
    const auto answer = reply<xcb_get_property_reply_t>(cookie);
    if (!answer || answer->format != 8)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(answer.get())), answer->value_len};
}

xcb_atom_t compositorSelection(XcbLink &link) {
    return link.atom("_NET_WM_CM_S" + std::to_string(link.screenNumber()));
}

bool isCompositorRunning(XcbLink &link) {
    return link.isOpen() && link.selectionOwner(compositorSelection(link)) != XCB_WINDOW_NONE;
}

} // namespace tavrine
