#include "adapters/x11/XConnection.h"

#include <algorithm>
#include <vector>

#include <xcb/xfixes.h>

namespace tavrine {
namespace {

constexpr qsizetype firstPieceBytes = qsizetype{64} * 1024;  // nearly every clipboard is done with this one
constexpr qsizetype pieceBytes = qsizetype{4} * 1024 * 1024; // few round trips, little held twice
constexpr qsizetype maxKnownNames = 4096;                    // a program may invent new atoms for ever
constexpr size_t maxRetired = 8;

} // namespace

void XConnection::open() {
    m_link.emplace(XcbLink::forEver);
    if (!m_link->isOpen())
        return;
    m_maxRequestBytes = qsizetype{xcb_get_maximum_request_length(get())} * 4 - 64; // the request's own header
    m_window = createWindow();
    if (!internAll())
        return;
    const xcb_query_extension_reply_t *xfixes = xcb_get_extension_data(get(), &xcb_xfixes_id);
    if (!xfixes || !xfixes->present)
        return;
    // The server answers nothing of XFixes before it was told the version.
    if (!m_link->reply<xcb_xfixes_query_version_reply_t>(xcb_xfixes_query_version(get(), 5, 0)))
        return;
    xcb_xfixes_select_selection_input(get(), m_window, m_atoms.clipboard,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    m_selectionNotice = xfixes->first_event + XCB_XFIXES_SELECTION_NOTIFY;
}

bool XConnection::isUsable() const {
    return m_selectionNotice >= 0 && m_link->isOpen();
}

bool XConnection::internAll() {
    xcb_atom_t SelectionAtoms::*const members[] = {
        &SelectionAtoms::clipboard, &SelectionAtoms::clipboardManager, &SelectionAtoms::targets,
        &SelectionAtoms::multiple,  &SelectionAtoms::timestamp,        &SelectionAtoms::saveTargets,
        &SelectionAtoms::incr,      &SelectionAtoms::atomPair,         &SelectionAtoms::utf8String,
        &SelectionAtoms::null,      &SelectionAtoms::serverTime};
    const char *const names[] = {
        "CLIPBOARD", "CLIPBOARD_MANAGER", "TARGETS",     "MULTIPLE", "TIMESTAMP",          "SAVE_TARGETS",
        "INCR",      "ATOM_PAIR",         "UTF8_STRING", "NULL",     "TAVRINE_SERVER_TIME"};
    static_assert(std::size(members) == std::size(names));
    std::vector<xcb_intern_atom_cookie_t> cookies; // all at once: one round trip
    for (const char *name : names)
        cookies.push_back(xcb_intern_atom(get(), 0, static_cast<uint16_t>(qstrlen(name)), name));
    bool isComplete = true;
    for (size_t i = 0; i < cookies.size(); ++i) {
        const auto reply = m_link->reply<xcb_intern_atom_reply_t>(cookies[i]);
        m_atoms.*members[i] = reply ? reply->atom : 0;
        isComplete = isComplete && reply;
    }
    return isComplete;
}

QList<QByteArray> XConnection::atomNames(const QList<std::uint32_t> &atoms) {
    if (m_names.size() > maxKnownNames)
        m_names.clear();
    std::vector<std::pair<xcb_atom_t, xcb_get_atom_name_cookie_t>> asked; // all at once: one round trip
    for (const std::uint32_t atom : atoms) {
        if (!m_names.contains(atom))
            asked.emplace_back(atom, xcb_get_atom_name(get(), atom));
    }
    for (const auto &[atom, cookie] : asked) {
        const auto reply = m_link->reply<xcb_get_atom_name_reply_t>(cookie);
        if (reply)
            m_names.insert(atom, QByteArray(xcb_get_atom_name_name(reply.get()), reply->name_len));
    }
    QList<QByteArray> names;
    for (const std::uint32_t atom : atoms)
        names.append(m_names.value(atom));
    return names;
}

xcb_timestamp_t XConnection::serverTime() {
    // The server tells its time in the notice of every property change; appending nothing is one that changes nothing.
    const xcb_void_cookie_t cookie = xcb_change_property(get(), XCB_PROP_MODE_APPEND, m_window, m_atoms.serverTime,
                                                         XCB_ATOM_INTEGER, 32, 0, nullptr);
    xcb_flush(get());
    while (XEvent event{xcb_wait_for_event(get())}) {
        if (eventType(*event) == XCB_PROPERTY_NOTIFY && !isSequenceBefore(event->full_sequence, cookie.sequence)) {
            const auto &notice = eventAs<xcb_property_notify_event_t>(*event);
            if (notice.window == m_window && notice.atom == m_atoms.serverTime)
                return notice.time;
        }
        m_deferred.push_back(std::move(event));
    }
    return XCB_CURRENT_TIME; // the connection is lost
}

PropertyValue XConnection::takeProperty(xcb_window_t window, xcb_atom_t property, qsizetype maxBytes, Excess excess) {
    PropertyValue value;
    qsizetype wanted = firstPieceBytes;
    for (bool isFirst = true;; isFirst = false) {
        const auto reply = m_link->reply<xcb_get_property_reply_t>(
            xcb_get_property(get(), 0, window, property, XCB_ATOM_ANY, static_cast<uint32_t>(value.bytes.size() / 4),
                             static_cast<uint32_t>(wanted / 4)));
        if (!reply)
            break;
        const int length = xcb_get_property_value_length(reply.get());
        if (isFirst) {
            value.type = reply->type;
            value.format = reply->format;
            const qint64 size = qint64{length} + qint64{reply->bytes_after};
            value.isTooLarge = size > maxBytes;
            if (value.isTooLarge && excess == Excess::refused)
                break;
            value.bytes.reserve(std::min<qsizetype>(size, maxBytes));
        } else if (reply->type != value.type || reply->format != value.format ||
                   (!value.isTooLarge && value.bytes.size() + length > maxBytes)) {
            break; // it is being rewritten under our eyes; what was read is all there will be
        }
        value.bytes.append(static_cast<const char *>(xcb_get_property_value(reply.get())),
                           std::min<qsizetype>(length, maxBytes - value.bytes.size()));
        if (value.isTooLarge && value.bytes.size() == maxBytes)
            break;
        // Offsets count in fours, so only whole fours can be followed by more.
        if (reply->bytes_after == 0 || length == 0 || length % 4 != 0)
            break;
        wanted = pieceBytes;
    }
    xcb_delete_property(get(), window, property);
    return value;
}

xcb_window_t XConnection::createWindow() const {
    const xcb_window_t window = xcb_generate_id(get());
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(get())).data;
    const uint32_t values[] = {1, XCB_EVENT_MASK_PROPERTY_CHANGE};
    xcb_create_window(get(), 0, window, screen->root, -10, -10, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    return window;
}

void XConnection::destroyWindow(xcb_window_t window) const {
    xcb_destroy_window(get(), window);
}

void XConnection::retireWindow(xcb_window_t window) {
    m_retired.push_back(window);
    if (m_retired.size() > maxRetired) {
        destroyWindow(m_retired.front());
        m_retired.pop_front();
    }
}

XEvent XConnection::nextEvent() {
    if (m_deferred.empty())
        return m_link->nextEvent();
    XEvent event = std::move(m_deferred.front());
    m_deferred.pop_front();
    return event;
}

bool XConnection::readAhead() {
    if (XEvent event{xcb_poll_for_queued_event(get())})
        m_deferred.push_back(std::move(event));
    return !m_deferred.empty();
}

} // namespace tavrine
