// The poster's ownership of the primary selection, for programs that paste nothing else.
#include "adapters/x11/X11EventPoster.h"

namespace tavrine {
namespace {

// What is larger than one request would need the incremental protocol; nobody pastes that much into a terminal.
constexpr qsizetype longestBytes = qsizetype{4} * 1024 * 1024;

} // namespace

void X11EventPoster::ownPrimary(const QString &text) {
    if (text.isEmpty())
        return;
    auto *connection = m_client.connection();
    const auto longest = static_cast<qsizetype>(xcb_get_maximum_request_length(connection)) * 4 - 64;
    m_primary = text.toUtf8().left(std::min(longestBytes, longest));
    // An empty change of a property is answered with the server's time, before any reply that follows.
    xcb_change_property(connection, XCB_PROP_MODE_APPEND, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0, nullptr);
    (void)m_client.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(connection));
    m_client.drain();
    m_ownedSince = m_serverTime;
    xcb_set_selection_owner(connection, m_window, XCB_ATOM_PRIMARY, m_ownedSince);
    m_client.flush();
}

void X11EventPoster::handle(const xcb_generic_event_t &event) {
    switch (event.response_type & 0x7f) {
    case XCB_PROPERTY_NOTIFY:
        m_serverTime = reinterpret_cast<const xcb_property_notify_event_t &>(event).time;
        break;
    case XCB_SELECTION_CLEAR:
        m_primary.clear();
        break;
    case XCB_SELECTION_REQUEST:
        answerRequest(reinterpret_cast<const xcb_selection_request_event_t &>(event));
        break;
    default:
        if (keyboardNotice(event, m_firstXkbEvent).isState)
            m_kept.invalidate(); // the keyboard goes on
        break;
    }
}

void X11EventPoster::answerRequest(const xcb_selection_request_event_t &request) {
    auto *connection = m_client.connection();
    const xcb_atom_t property = request.property != XCB_ATOM_NONE ? request.property : request.target;
    const xcb_atom_t utf8 = m_client.atom("UTF8_STRING");
    const xcb_atom_t targets = m_client.atom("TARGETS");
    const xcb_atom_t timestamp = m_client.atom("TIMESTAMP");
    bool isAnswered = !m_primary.isNull();
    if (!isAnswered) {
        // the selection went to somebody else meanwhile
    } else if (request.target == targets) {
        const xcb_atom_t known[] = {targets, timestamp, utf8, XCB_ATOM_STRING, m_client.atom("TEXT")};
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, request.requestor, property, XCB_ATOM_ATOM, 32,
                            std::size(known), known);
    } else if (request.target == timestamp) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, request.requestor, property, XCB_ATOM_INTEGER, 32, 1,
                            &m_ownedSince);
    } else if (request.target == utf8 || request.target == m_client.atom("TEXT")) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, request.requestor, property, utf8, 8,
                            static_cast<quint32>(m_primary.size()), m_primary.constData());
    } else if (request.target == XCB_ATOM_STRING) {
        const QByteArray latin = QString::fromUtf8(m_primary).toLatin1();
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, request.requestor, property, XCB_ATOM_STRING, 8,
                            static_cast<quint32>(latin.size()), latin.constData());
    } else {
        isAnswered = false;
    }
    xcb_selection_notify_event_t notice{};
    notice.response_type = XCB_SELECTION_NOTIFY;
    notice.time = request.time;
    notice.requestor = request.requestor;
    notice.selection = request.selection;
    notice.target = request.target;
    notice.property = isAnswered ? property : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    xcb_send_event(connection, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char *>(&notice));
    m_client.flush();
}

} // namespace tavrine
