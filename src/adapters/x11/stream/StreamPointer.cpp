#include "adapters/x11/stream/StreamPointer.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <xcb/sync.h>

namespace tavrine {
namespace {

constexpr int largestShape = 1024; // larger ones are no pointer

/// The server's counter with that name; 0 for none.
xcb_sync_counter_t systemCounter(XcbLink &link, std::string_view name) {
    const auto answer =
        link.reply<xcb_sync_list_system_counters_reply_t>(xcb_sync_list_system_counters(link.connection()));
    if (!answer)
        return 0;
    for (auto each = xcb_sync_list_system_counters_counters_iterator(answer.get()); each.rem > 0;
         xcb_sync_systemcounter_next(&each)) {
        // The library takes the name for two bytes later than it is: it counts the padding of its own structure.
        constexpr size_t bytesBeforeName = 14;
        const auto *const record = reinterpret_cast<const char *>(each.data);
        if (std::string_view(record + bytesBeforeName, each.data->name_len) == name)
            return each.data->counter;
    }
    return 0;
}

/// `pixel` over `below`, a channel at a time; both without a meaning in what is not colour.
quint32 over(quint32 pixel, quint32 below) {
    const quint32 left = 255 - (pixel >> 24);
    quint32 mixed = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const quint32 part = (below >> shift & 0xff) * left;
        mixed |= std::min<quint32>((pixel >> shift & 0xff) + (part + 127) / 255, 255) << shift;
    }
    return mixed;
}

} // namespace

bool StreamPointer::open() {
    auto *const connection = m_link.connection();
    const auto *const fixes = m_link.extension(xcb_xfixes_id);
    if (!fixes)
        return false;
    m_shapeNotice = fixes->first_event + XCB_XFIXES_CURSOR_NOTIFY;
    xcb_xfixes_select_cursor_input(connection, m_link.root(), XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    watchIdleTime();
    return true;
}

void StreamPointer::watchIdleTime() {
    auto *const connection = m_link.connection();
    const auto *const sync = m_link.extension(xcb_sync_id);
    if (!sync || !m_link.reply<xcb_sync_initialize_reply_t>(
                     xcb_sync_initialize(connection, XCB_SYNC_MAJOR_VERSION, XCB_SYNC_MINOR_VERSION)))
        return;
    const xcb_sync_counter_t idleTime = systemCounter(m_link, "IDLETIME");
    if (idleTime == 0)
        return;
    m_alarmNotice = sync->first_event + XCB_SYNC_ALARM_NOTIFY;
    // Each time it falls to a millisecond or less, for as long as the alarm is there.
    const quint32 values[] = {idleTime, XCB_SYNC_VALUETYPE_ABSOLUTE, 0, 1, XCB_SYNC_TESTTYPE_NEGATIVE_TRANSITION, 0, 0,
                              1};
    xcb_sync_create_alarm(connection, m_link.newId(),
                          XCB_SYNC_CA_COUNTER | XCB_SYNC_CA_VALUE_TYPE | XCB_SYNC_CA_VALUE | XCB_SYNC_CA_TEST_TYPE |
                              XCB_SYNC_CA_DELTA | XCB_SYNC_CA_EVENTS,
                          values);
}

bool StreamPointer::handle(const xcb_generic_event_t &event) {
    const int type = eventType(event);
    if (type == m_shapeNotice) {
        m_isShapeOld = true;
        return true;
    }
    return type == m_alarmNotice;
}

void StreamPointer::ask() {
    m_placeQuestion = xcb_query_pointer(m_link.connection(), m_link.root()).sequence;
    m_shapeQuestion = m_isShapeOld ? xcb_xfixes_get_cursor_image(m_link.connection()).sequence : 0;
}

void StreamPointer::take() {
    const auto place = m_link.reply<xcb_query_pointer_reply_t>(xcb_query_pointer_cookie_t{m_placeQuestion});
    const auto shape =
        m_shapeQuestion
            ? m_link.reply<xcb_xfixes_get_cursor_image_reply_t>(xcb_xfixes_get_cursor_image_cookie_t{m_shapeQuestion})
            : nullptr;
    if (shape)
        takeShape(shape.get());
    if (place)
        m_place = {place->root_x, place->root_y};
    const QRect area(m_place - m_hotSpot, m_size);
    if (area != m_seen.area || shape)
        m_seen = {m_seen.look + 1, area};
}

void StreamPointer::takeShape(const xcb_xfixes_get_cursor_image_reply_t *answer) {
    m_isShapeOld = false;
    m_size = {};
    m_pixels.clear();
    const qsizetype count = qsizetype{answer->width} * answer->height;
    if (answer->width > largestShape || answer->height > largestShape ||
        xcb_xfixes_get_cursor_image_cursor_image_length(answer) < count)
        return;
    const std::uint32_t *const pixels = xcb_xfixes_get_cursor_image_cursor_image(answer);
    m_pixels.assign(pixels, pixels + count);
    m_size = {answer->width, answer->height};
    m_hotSpot = {answer->xhot, answer->yhot};
}

void StreamPointer::paint(PixelsToPaint picture, QPoint origin) const {
    const QRect area = m_seen.area.translated(-origin);
    const QRect part = area & picture.rect();
    for (int y = part.top(); y <= part.bottom(); ++y) {
        const quint32 *const from = m_pixels.data() + qsizetype{y - area.y()} * m_size.width() - area.x();
        quint32 *const to = picture.line(y);
        for (int x = part.left(); x <= part.right(); ++x)
            to[x] = over(from[x], to[x]);
    }
}

} // namespace tavrine
