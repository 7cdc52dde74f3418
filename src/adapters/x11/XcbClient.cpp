#include "adapters/x11/XcbClient.h"

#include <QDeadlineTimer>
#include <QSocketNotifier>

#include <poll.h>
#include <xcb/xcbext.h>

namespace tavrine {
namespace {

// A healthy server answers in well under a millisecond; what takes longer is held by another program.
constexpr int longestWaitMs = 200;
constexpr quint32 longestTextBytes = 1024;

xcb_screen_t *screenOf(xcb_connection_t *connection, int number) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0 && number > 0; --number)
        xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

} // namespace

XcbClient::XcbClient(Handler handler, std::function<void()> onDrained, QObject *parent)
    : QObject(parent), m_handler(std::move(handler)), m_onDrained(std::move(onDrained)) {
    m_connection = xcb_connect(nullptr, &m_screenNumber);
    if (xcb_connection_has_error(m_connection))
        return;
    m_screen = screenOf(m_connection, m_screenNumber);
    m_notifier = new QSocketNotifier(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &XcbClient::onReadable);
}

XcbClient::~XcbClient() {
    delete m_notifier; // before the descriptor that it watches
    xcb_disconnect(m_connection);
}

bool XcbClient::isConnected() const {
    return m_screen && !xcb_connection_has_error(m_connection);
}

xcb_atom_t XcbClient::atom(const std::string &name) {
    if (const auto known = m_atoms.find(name); known != m_atoms.end())
        return known->second;
    const auto cookie = xcb_intern_atom(m_connection, 0, static_cast<quint16>(name.size()), name.c_str());
    const auto answer = reply<xcb_intern_atom_reply_t>(cookie);
    if (!answer)
        return XCB_ATOM_NONE;
    return m_atoms[name] = answer->atom;
}

void *XcbClient::await(unsigned int sequence) {
    const QDeadlineTimer deadline(longestWaitMs);
    xcb_flush(m_connection);
    void *answer = nullptr;
    xcb_generic_error_t *error = nullptr;
    while (!xcb_poll_for_reply(m_connection, sequence, &answer, &error)) {
        pollfd descriptor{xcb_get_file_descriptor(m_connection), POLLIN, 0};
        if (xcb_connection_has_error(m_connection) || deadline.hasExpired()) {
            xcb_discard_reply(m_connection, sequence);
            m_isLate = true;
            return nullptr; // what the server sends once it is free again wakes us
        }
        ::poll(&descriptor, 1, static_cast<int>(deadline.remainingTime()));
    }
    std::free(error);
    // Events that were read along with the reply no longer make the socket readable.
    if (!m_isDraining && !std::exchange(m_isDrainPosted, true))
        QMetaObject::invokeMethod(this, &XcbClient::onReadable, Qt::QueuedConnection);
    return answer;
}

xcb_get_property_cookie_t XcbClient::ask(xcb_window_t window, const std::string &property) {
    return xcb_get_property(m_connection, 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0,
                            longestTextBytes / 4);
}

std::vector<quint32> XcbClient::words(xcb_get_property_cookie_t cookie) {
    const auto answer = reply<xcb_get_property_reply_t>(cookie);
    if (!answer || answer->format != 32)
        return {};
    const auto *first = static_cast<const quint32 *>(xcb_get_property_value(answer.get()));
    return {first, first + answer->value_len};
}

QByteArray XcbClient::text(xcb_get_property_cookie_t cookie) {
    const auto answer = reply<xcb_get_property_reply_t>(cookie);
    if (!answer || answer->format != 8)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(answer.get())), static_cast<qsizetype>(answer->value_len)};
}

void XcbClient::drain() {
    if (!isConnected() || std::exchange(m_isDraining, true))
        return;
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(m_connection)}) {
        // An error here belongs to a request about a window that went meanwhile.
        if (event->response_type != 0)
            m_handler(*event);
    }
    m_isDraining = false;
}

void XcbClient::onReadable() {
    m_isDrainPosted = false;
    drain();
    if (!isConnected() && m_notifier)
        m_notifier->setEnabled(false); // the server is gone; a closed socket stays readable for ever
    if (m_onDrained)
        m_onDrained();
}

} // namespace tavrine
