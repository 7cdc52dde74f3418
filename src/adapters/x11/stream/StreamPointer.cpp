#include "adapters/x11/stream/StreamPointer.h"

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

constexpr int largestShape = 1024; // larger ones are no pointer
constexpr PointerAlarm::Length shortestRest{1};

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
    if (!m_alarm || !m_alarm->isSet()) // it may have been late, and is asked for again
        m_alarm.emplace(m_link, shortestRest);
    return true;
}

bool StreamPointer::handle(const xcb_generic_event_t &event) {
    if (eventType(event) == m_shapeNotice) {
        m_isShapeOld = true;
        return true;
    }
    return m_alarm && m_alarm->isRinging(event);
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
