#include "adapters/x11/frozen/XcbLink.h"

#include <QDeadlineTimer>

#include <poll.h>
#include <xcb/xcbext.h>

namespace tavrine {
namespace {

constexpr int longestWaitMs = 2000;

xcb_screen_t *screenOf(xcb_connection_t *connection, int number) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0 && number > 0; --number)
        xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

} // namespace

XcbLink::XcbLink() : m_connection(xcb_connect(nullptr, &m_screenNumber)) {
    if (!xcb_connection_has_error(m_connection))
        m_screen = screenOf(m_connection, m_screenNumber);
}

XcbLink::~XcbLink() {
    xcb_disconnect(m_connection);
}

void *XcbLink::await(unsigned int sequence) {
    const QDeadlineTimer deadline(longestWaitMs);
    xcb_flush(m_connection);
    void *answer = nullptr;
    xcb_generic_error_t *error = nullptr;
    while (!xcb_poll_for_reply(m_connection, sequence, &answer, &error)) {
        if (xcb_connection_has_error(m_connection) || deadline.hasExpired()) {
            xcb_discard_reply(m_connection, sequence);
            return nullptr;
        }
        pollfd descriptor{xcb_get_file_descriptor(m_connection), POLLIN, 0};
        ::poll(&descriptor, 1, static_cast<int>(deadline.remainingTime()));
    }
    std::free(error);
    return answer;
}

xcb_atom_t XcbLink::atom(const std::string &name) {
    const auto answer = reply<xcb_intern_atom_reply_t>(
        xcb_intern_atom(m_connection, 0, static_cast<quint16>(name.size()), name.c_str()));
    return answer ? answer->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

std::vector<quint32> XcbLink::words(xcb_window_t window, xcb_atom_t property) {
    constexpr quint32 longestWords = 256;
    const auto answer = reply<xcb_get_property_reply_t>(
        xcb_get_property(m_connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, longestWords));
    if (!answer || answer->format != 32)
        return {};
    const auto *first = static_cast<const quint32 *>(xcb_get_property_value(answer.get()));
    return {first, first + answer->value_len};
}

std::string XcbLink::text(xcb_window_t window, xcb_atom_t property) {
    constexpr quint32 longestWords = 16 * 1024;
    const auto answer = reply<xcb_get_property_reply_t>(
        xcb_get_property(m_connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, longestWords));
    if (!answer || answer->format != 8)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(answer.get())), answer->value_len};
}

bool XcbLink::finish() {
    return reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(m_connection)) != nullptr;
}

} // namespace tavrine
