#include "adapters/x11/stream/WindowLayer.h"

#include <utility>
#include <vector>

#include <xcb/composite.h>
#include <xcb/shape.h>

namespace tavrine {
namespace {

constexpr std::uint8_t depthWithAlpha = 32;

} // namespace

xcb_xfixes_region_t makeRegion(XcbLink &link, const QRegion &region, QPoint origin) {
    std::vector<xcb_rectangle_t> rects;
    for (const QRect &each : region)
        rects.push_back({static_cast<std::int16_t>(each.x() - origin.x()),
                         static_cast<std::int16_t>(each.y() - origin.y()), static_cast<std::uint16_t>(each.width()),
                         static_cast<std::uint16_t>(each.height())});
    const xcb_xfixes_region_t made = link.newId();
    xcb_xfixes_create_region(link.connection(), made, static_cast<std::uint32_t>(rects.size()), rects.data());
    return made;
}

unsigned int askRegion(XcbLink &link, xcb_damage_damage_t damage) {
    const xcb_xfixes_region_t parts = makeRegion(link, {}, {});
    xcb_damage_subtract(link.connection(), damage, XCB_NONE, parts);
    const unsigned int question = xcb_xfixes_fetch_region(link.connection(), parts).sequence;
    xcb_xfixes_destroy_region(link.connection(), parts);
    return question;
}

std::optional<QRegion> takeRegion(XcbLink &link, unsigned int question) {
    constexpr int manyRects = 64; // more cost more to keep apart than to read
    const auto answer = link.reply<xcb_xfixes_fetch_region_reply_t>(xcb_xfixes_fetch_region_cookie_t{question});
    if (!answer)
        return std::nullopt;
    const auto rectOf = [](const xcb_rectangle_t &each) { return QRect(each.x, each.y, each.width, each.height); };
    const xcb_rectangle_t *const rects = xcb_xfixes_fetch_region_rectangles(answer.get());
    const int count = xcb_xfixes_fetch_region_rectangles_length(answer.get());
    if (count > manyRects)
        return QRegion(rectOf(answer->extents));
    QRegion region;
    for (int i = 0; i < count; ++i)
        region += rectOf(rects[i]);
    return region;
}

bool PictureFormats::read(XcbLink &link) {
    const auto answer =
        link.reply<xcb_render_query_pict_formats_reply_t>(xcb_render_query_pict_formats(link.connection()));
    if (!answer)
        return false;
    for (auto screen = xcb_render_query_pict_formats_screens_iterator(answer.get()); screen.rem > 0;
         xcb_render_pictscreen_next(&screen))
        for (auto depth = xcb_render_pictscreen_depths_iterator(screen.data); depth.rem > 0;
             xcb_render_pictdepth_next(&depth))
            for (auto each = xcb_render_pictdepth_visuals_iterator(depth.data); each.rem > 0;
                 xcb_render_pictvisual_next(&each))
                m_formats[each.data->visual] = each.data->format;
    return true;
}

xcb_render_pictformat_t PictureFormats::forVisual(xcb_visualid_t visual) const {
    const auto found = m_formats.find(visual);
    return found == m_formats.end() ? 0 : found->second;
}

std::unique_ptr<WindowLayer> WindowLayer::make(XcbLink &link, const PictureFormats &formats, xcb_window_t window) {
    auto *const connection = link.connection();
    const auto attributesQuestion = xcb_get_window_attributes(connection, window);
    const auto geometryQuestion = xcb_get_geometry(connection, window);
    const auto attributes = link.reply<xcb_get_window_attributes_reply_t>(attributesQuestion);
    const auto geometry = link.reply<xcb_get_geometry_reply_t>(geometryQuestion);
    if (!attributes || !geometry || attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT)
        return nullptr;
    std::unique_ptr<WindowLayer> layer(new WindowLayer(link));
    layer->m_window = window;
    layer->m_format = formats.forVisual(attributes->visual);
    layer->m_hasAlpha = geometry->depth == depthWithAlpha;
    layer->m_hasOwnDepth = geometry->depth != link.screen().root_depth;
    if (layer->m_format == 0)
        return nullptr;
    // First the damage, which begins with all of the window: then what is drawn because the window is kept is noticed.
    layer->m_damage = link.newId();
    xcb_damage_create(connection, layer->m_damage, window, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    xcb_damage_subtract(connection, layer->m_damage, XCB_NONE, XCB_NONE);
    xcb_composite_redirect_window(connection, window, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    xcb_shape_select_input(connection, window, 1);
    return layer;
}

WindowLayer::~WindowLayer() {
    auto *const connection = m_link.connection();
    if (m_window == XCB_WINDOW_NONE || m_damage == 0)
        return;
    forgetContents();
    forgetUntold();
    xcb_damage_destroy(connection, m_damage);
    xcb_composite_unredirect_window(connection, m_window, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
}

void WindowLayer::forgetContents() {
    if (m_picture)
        xcb_render_free_picture(m_link.connection(), std::exchange(m_picture, 0));
    if (m_pixmap)
        xcb_free_pixmap(m_link.connection(), std::exchange(m_pixmap, 0));
}

void WindowLayer::follow(const WindowStack::Window &state) {
    if (!m_area.isNull()) // what is still to be drawn moves with it
        unpainted.translate(state.area.topLeft() - m_area.topLeft());
    m_area = state.area;
    m_border = state.border;
    if (m_content == state.content)
        return;
    m_content = state.content;
    forgetContents();
    m_pixmap = m_link.newId();
    xcb_composite_name_window_pixmap(m_link.connection(), m_window, m_pixmap);
    m_picture = m_link.newId();
    xcb_render_create_picture(m_link.connection(), m_picture, m_pixmap, m_format, 0, nullptr);
}

void WindowLayer::draw(xcb_render_picture_t target, QPoint origin, xcb_xfixes_region_t part, bool isComposited) {
    auto *const connection = m_link.connection();
    const QPoint corner = m_area.topLeft() - origin;
    const xcb_xfixes_region_t shape = m_link.newId();
    const xcb_xfixes_region_t clip = makeRegion(m_link, {}, {});
    const xcb_xfixes_region_t leftOut = makeRegion(m_link, unpainted, origin);
    xcb_xfixes_create_region_from_window(connection, shape, m_window, XCB_SHAPE_SK_BOUNDING);
    xcb_xfixes_translate_region(connection, shape, static_cast<std::int16_t>(corner.x() + m_border),
                                static_cast<std::int16_t>(corner.y() + m_border));
    xcb_xfixes_intersect_region(connection, shape, part, clip);
    xcb_xfixes_subtract_region(connection, clip, leftOut, clip);
    xcb_xfixes_set_picture_clip_region(connection, target, clip, 0, 0);
    // Without a compositor nothing shows through a window, whatever its alpha says.
    const std::uint8_t operation = m_hasAlpha && isComposited ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC;
    xcb_render_composite(connection, operation, m_picture, XCB_NONE, target, 0, 0, 0, 0,
                         static_cast<std::int16_t>(corner.x()), static_cast<std::int16_t>(corner.y()),
                         static_cast<std::uint16_t>(m_area.width()), static_cast<std::uint16_t>(m_area.height()));
    for (const xcb_xfixes_region_t each : {shape, clip, leftOut})
        xcb_xfixes_destroy_region(connection, each);
}

void WindowLayer::askDamage() {
    m_damageQuestion = 0;
    if (!std::exchange(isDamaged, false))
        return;
    auto *const connection = m_link.connection();
    const xcb_xfixes_region_t before = std::exchange(m_untold, makeRegion(m_link, {}, {}));
    xcb_damage_subtract(connection, m_damage, XCB_NONE, m_untold);
    if (before) {
        xcb_xfixes_union_region(connection, before, m_untold, m_untold);
        xcb_xfixes_destroy_region(connection, before);
    }
    m_damageQuestion = xcb_xfixes_fetch_region(connection, m_untold).sequence;
}

QRegion WindowLayer::takeDamage() {
    if (m_damageQuestion == 0)
        return {};
    const auto damage = takeRegion(m_link, std::exchange(m_damageQuestion, 0));
    isDamaged = isDamaged || !damage; // the server keeps it for the next question
    if (!damage)
        return {};
    forgetUntold();
    // Damage counts from the window's inner corner.
    return damage->translated(m_area.topLeft() + QPoint(m_border, m_border));
}

void WindowLayer::forgetUntold() {
    if (m_untold)
        xcb_xfixes_destroy_region(m_link.connection(), std::exchange(m_untold, 0));
}

} // namespace tavrine
