#include "adapters/x11/TestRequestor.h"

#include <cstdlib>
#include <cstring>
#include <vector>

#include <poll.h>

namespace tavrine {

TestRequestor::TestRequestor() : m_connection(xcb_connect(nullptr, nullptr)), m_window(xcb_generate_id(m_connection)) {
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection, 0, m_window, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
}

TestRequestor::~TestRequestor() {
    for (xcb_generic_event_t *event : m_events)
        std::free(event);
    xcb_disconnect(m_connection);
}

std::optional<TestRequestor::Value> TestRequestor::paste(const QByteArray &target) {
    const xcb_atom_t property = atom("TEST_PASTE");
    xcb_convert_selection(m_connection, m_window, atom("CLIPBOARD"), atom(target), property, XCB_CURRENT_TIME);
    xcb_generic_event_t *event = waitFor(XCB_SELECTION_NOTIFY, 0);
    if (!event)
        return std::nullopt;
    const bool isRefused = reinterpret_cast<xcb_selection_notify_event_t *>(event)->property == 0;
    std::free(event);
    return isRefused ? std::nullopt : take(property);
}

QList<QByteArray> TestRequestor::targets() {
    const auto value = paste("TARGETS");
    QList<QByteArray> names;
    for (qsizetype i = 0; value && i + 4 <= value->bytes.size(); i += 4) {
        xcb_atom_t one = 0;
        std::memcpy(&one, value->bytes.constData() + i, sizeof one);
        names.append(name(one));
    }
    return names;
}

QList<std::optional<TestRequestor::Value>> TestRequestor::pasteMultiple(const QList<QByteArray> &targets) {
    const xcb_atom_t property = atom("TEST_MULTIPLE");
    std::vector<uint32_t> pairs;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        pairs.push_back(atom(targets[i]));
        pairs.push_back(atom("TEST_PASTE_" + QByteArray::number(i)));
    }
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, property, atom("ATOM_PAIR"), 32,
                        static_cast<uint32_t>(pairs.size()), pairs.data());
    xcb_convert_selection(m_connection, m_window, atom("CLIPBOARD"), atom("MULTIPLE"), property, XCB_CURRENT_TIME);
    QList<std::optional<Value>> values;
    xcb_generic_event_t *event = waitFor(XCB_SELECTION_NOTIFY, 0);
    const bool isRefused = !event || reinterpret_cast<xcb_selection_notify_event_t *>(event)->property == 0;
    std::free(event);
    if (isRefused)
        return values;
    const Value answer = read(property);
    for (qsizetype i = 0; i < targets.size() && (i + 1) * 8 <= answer.bytes.size(); ++i) {
        xcb_atom_t into = 0;
        std::memcpy(&into, answer.bytes.constData() + i * 8 + 4, sizeof into);
        values.append(into == 0 ? std::nullopt : take(into));
    }
    return values;
}

void TestRequestor::askAndLeave(const QByteArray &target) {
    xcb_window_t window = xcb_generate_id(m_connection);
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    xcb_create_window(m_connection, 0, window, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_convert_selection(m_connection, window, atom("CLIPBOARD"), atom(target), atom("TEST_PASTE"), XCB_CURRENT_TIME);
    xcb_destroy_window(m_connection, window);
    xcb_flush(m_connection);
}

void TestRequestor::askAndHang(const QByteArray &target) {
    xcb_convert_selection(m_connection, m_window, atom("CLIPBOARD"), atom(target), atom("TEST_HANG"), XCB_CURRENT_TIME);
    std::free(waitFor(XCB_SELECTION_NOTIFY, 0));
}

std::optional<TestRequestor::Value> TestRequestor::finish() {
    return take(atom("TEST_HANG"));
}

xcb_window_t TestRequestor::owner() {
    xcb_get_selection_owner_reply_t *reply =
        xcb_get_selection_owner_reply(m_connection, xcb_get_selection_owner(m_connection, atom("CLIPBOARD")), nullptr);
    const xcb_window_t window = reply ? reply->owner : 0;
    std::free(reply);
    return window;
}

bool TestRequestor::hasOwnerOtherThan(xcb_window_t window) {
    const xcb_window_t now = owner();
    return now != XCB_WINDOW_NONE && now != window;
}

xcb_atom_t TestRequestor::atom(const QByteArray &wanted) {
    xcb_intern_atom_reply_t *reply = xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, 0, static_cast<uint16_t>(wanted.size()), wanted.constData()),
        nullptr);
    const xcb_atom_t value = reply ? reply->atom : 0;
    std::free(reply);
    return value;
}

/// The next event of this type; of property notices, the next new value of `property`.
xcb_generic_event_t *TestRequestor::waitFor(int type, xcb_atom_t property) {
    const auto end = std::chrono::steady_clock::now() + patience;
    for (;;) {
        for (qsizetype i = 0; i < m_events.size(); ++i) {
            xcb_generic_event_t *event = m_events[i];
            const auto &notice = *reinterpret_cast<xcb_property_notify_event_t *>(event);
            if ((event->response_type & 0x7F) == type &&
                (type != XCB_PROPERTY_NOTIFY || (notice.atom == property && notice.state == XCB_PROPERTY_NEW_VALUE))) {
                m_events.removeAt(i);
                return event;
            }
        }
        if (xcb_generic_event_t *event = xcb_poll_for_event(m_connection)) {
            m_events.append(event);
            continue;
        }
        xcb_flush(m_connection);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
        pollfd descriptor{xcb_get_file_descriptor(m_connection), POLLIN, 0};
        if (left <= 0 || ::poll(&descriptor, 1, static_cast<int>(left)) <= 0)
            return nullptr;
    }
}

std::optional<TestRequestor::Value> TestRequestor::take(xcb_atom_t property) {
    // Notices up to here are of the answer itself, or of the beginning of a piecemeal one.
    while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection))
        m_events.append(event);
    m_events.removeIf([property](xcb_generic_event_t *event) {
        const auto &notice = *reinterpret_cast<xcb_property_notify_event_t *>(event);
        const bool isOld = (event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY && notice.atom == property;
        if (isOld)
            std::free(event);
        return isOld;
    });
    Value value = read(property);
    if (value.type != "INCR")
        return value;
    value = {};
    for (;;) {
        xcb_generic_event_t *event = waitFor(XCB_PROPERTY_NOTIFY, property);
        if (!event)
            return std::nullopt;
        std::free(event);
        const Value piece = read(property);
        if (value.type.isEmpty())
            value = {piece.type, piece.format, {}, true};
        if (piece.bytes.isEmpty())
            return value;
        value.bytes += piece.bytes;
    }
}

TestRequestor::Value TestRequestor::read(xcb_atom_t property) {
    Value value;
    xcb_get_property_reply_t *reply = xcb_get_property_reply(
        m_connection, xcb_get_property(m_connection, 1, m_window, property, XCB_ATOM_ANY, 0, 64 * 1024 * 1024),
        nullptr);
    if (reply) {
        value.type = name(reply->type);
        value.format = reply->format;
        value.bytes =
            QByteArray(static_cast<const char *>(xcb_get_property_value(reply)), xcb_get_property_value_length(reply));
    }
    std::free(reply);
    return value;
}

QByteArray TestRequestor::name(xcb_atom_t wanted) {
    if (wanted == 0)
        return {};
    xcb_get_atom_name_reply_t *reply =
        xcb_get_atom_name_reply(m_connection, xcb_get_atom_name(m_connection, wanted), nullptr);
    QByteArray text = reply ? QByteArray(xcb_get_atom_name_name(reply), reply->name_len) : QByteArray();
    std::free(reply);
    return text;
}

} // namespace tavrine
