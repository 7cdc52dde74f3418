#include "support/ScreenClient.h"

#include <cstdlib>
#include <memory>

#include <xcb/render.h>
#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>

namespace tavrine::testing {
namespace {

template <class T>
using Reply = std::unique_ptr<T, void (*)(void *)>;

const xcb_screen_t &screenOf(xcb_connection_t *connection) {
    return *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
}

xcb_rectangle_t rectOf(const QRect &area) {
    return {static_cast<std::int16_t>(area.x()), static_cast<std::int16_t>(area.y()),
            static_cast<std::uint16_t>(area.width()), static_cast<std::uint16_t>(area.height())};
}

xcb_visualid_t visualWithAlpha(const xcb_screen_t &screen) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths))
        if (depths.data->depth == 32 && depths.data->visuals_len > 0)
            return xcb_depth_visuals(depths.data)->visual_id;
    return 0;
}

} // namespace

ScreenClient::ScreenClient() : m_connection(xcb_connect(nullptr, nullptr)) {
    m_root = screenOf(m_connection).root;
    m_context = xcb_generate_id(m_connection);
    xcb_create_gc(m_connection, m_context, m_root, 0, nullptr);
    const Reply<xcb_render_query_version_reply_t> version(
        xcb_render_query_version_reply(m_connection, xcb_render_query_version(m_connection, 0, 11), nullptr),
        &std::free);
    finish();
}

ScreenClient::~ScreenClient() {
    xcb_disconnect(m_connection);
}

void ScreenClient::finish() const {
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

ScreenClient::Window ScreenClient::create(const QRect &area, int depth, std::uint32_t visual, std::uint32_t mask,
                                          const std::vector<std::uint32_t> &values) {
    const Window window = xcb_generate_id(m_connection);
    const xcb_rectangle_t place = rectOf(area);
    xcb_create_window(m_connection, static_cast<std::uint8_t>(depth), window, m_root, place.x, place.y, place.width,
                      place.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual, mask, values.data());
    xcb_map_window(m_connection, window);
    finish();
    return window;
}

ScreenClient::Window ScreenClient::add(const QRect &area, std::uint32_t colour) {
    return create(area, XCB_COPY_FROM_PARENT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
                  {colour, 1});
}

ScreenClient::Window ScreenClient::addTranslucent(const QRect &area, std::uint32_t colour) {
    const xcb_visualid_t visual = visualWithAlpha(screenOf(m_connection));
    const xcb_colormap_t colours = xcb_generate_id(m_connection);
    xcb_create_colormap(m_connection, XCB_COLORMAP_ALLOC_NONE, colours, m_root, visual);
    return create(area, 32, visual,
                  XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
                  {colour, 0, 1, colours});
}

ScreenClient::Window ScreenClient::addBare(const QRect &area) {
    return create(area, XCB_COPY_FROM_PARENT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT,
                  {XCB_BACK_PIXMAP_NONE, 1});
}

void ScreenClient::destroy(Window window) {
    xcb_destroy_window(m_connection, window);
    finish();
}

void ScreenClient::setMapped(Window window, bool isMapped) {
    if (isMapped)
        xcb_map_window(m_connection, window);
    else
        xcb_unmap_window(m_connection, window);
    finish();
}

void ScreenClient::move(Window window, const QRect &area) {
    const std::uint32_t values[] = {static_cast<std::uint32_t>(area.x()), static_cast<std::uint32_t>(area.y()),
                                    static_cast<std::uint32_t>(area.width()),
                                    static_cast<std::uint32_t>(area.height())};
    xcb_configure_window(m_connection, window,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         values);
    finish();
}

void ScreenClient::raise(Window window) {
    const std::uint32_t mode = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(m_connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &mode);
    finish();
}

void ScreenClient::lower(Window window) {
    const std::uint32_t mode = XCB_STACK_MODE_BELOW;
    xcb_configure_window(m_connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &mode);
    finish();
}

void ScreenClient::shape(Window window, const std::vector<QRect> &parts) {
    std::vector<xcb_rectangle_t> rects;
    for (const QRect &part : parts)
        rects.push_back(rectOf(part));
    xcb_shape_rectangles(m_connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED, window, 0,
                         0, static_cast<std::uint32_t>(rects.size()), rects.data());
    finish();
}

void ScreenClient::paintOften(Window window, const QRect &area, std::uint32_t colour) {
    const xcb_rectangle_t rect = rectOf(area);
    xcb_change_gc(m_connection, m_context, XCB_GC_FOREGROUND, &colour);
    xcb_poly_fill_rectangle(m_connection, window, m_context, 1, &rect);
    xcb_flush(m_connection);
}

void ScreenClient::paint(Window window, const QRect &area, std::uint32_t colour) {
    paintOften(window, area, colour);
    finish();
}

std::uint32_t ScreenClient::atom(const std::string &name) const {
    const Reply<xcb_intern_atom_reply_t> answer(
        xcb_intern_atom_reply(m_connection,
                              xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
                              nullptr),
        &std::free);
    return answer->atom;
}

bool ScreenClient::isComposited() const {
    const Reply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(m_connection, xcb_get_selection_owner(m_connection, atom("_NET_WM_CM_S0")),
                                      nullptr),
        &std::free);
    return owner->owner != XCB_WINDOW_NONE;
}

void ScreenClient::setBackground(std::uint32_t colour) {
    paintBackground(colour);
    tellOfBackground(colour);
}

void ScreenClient::paintBackground(std::uint32_t colour) {
    xcb_change_window_attributes(m_connection, m_root, XCB_CW_BACK_PIXEL, &colour);
    xcb_clear_area(m_connection, 0, m_root, 0, 0, 0, 0);
    finish();
}

void ScreenClient::tellOfBackground(std::uint32_t pixmap) {
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_root, atom("_XROOTPMAP_ID"), XCB_ATOM_PIXMAP, 32, 1,
                        &pixmap);
    finish();
}

void ScreenClient::setWallpaper(const QImage &tile) {
    const QImage image = tile.convertToFormat(QImage::Format_RGB32);
    const auto width = static_cast<std::uint16_t>(image.width());
    const auto height = static_cast<std::uint16_t>(image.height());
    const xcb_pixmap_t pixmap = xcb_generate_id(m_connection);
    xcb_create_pixmap(m_connection, screenOf(m_connection).root_depth, pixmap, m_root, width, height);
    xcb_put_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, m_context, width, height, 0, 0, 0,
                  screenOf(m_connection).root_depth, static_cast<std::uint32_t>(image.sizeInBytes()),
                  image.constBits());
    xcb_change_window_attributes(m_connection, m_root, XCB_CW_BACK_PIXMAP, &pixmap);
    xcb_clear_area(m_connection, 0, m_root, 0, 0, 0, 0);
    for (const char *property : {"_XROOTPMAP_ID", "ESETROOT_PMAP_ID"})
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_root, atom(property), XCB_ATOM_PIXMAP, 32, 1,
                            &pixmap);
    finish();
}

void ScreenClient::setPointer(Window window, QSize size, QPoint hotSpot, std::uint32_t colour) {
    const Reply<xcb_render_query_pict_formats_reply_t> formats(
        xcb_render_query_pict_formats_reply(m_connection, xcb_render_query_pict_formats(m_connection), nullptr),
        &std::free);
    xcb_render_pictformat_t format = 0;
    for (auto each = xcb_render_query_pict_formats_formats_iterator(formats.get()); each.rem > 0;
         xcb_render_pictforminfo_next(&each))
        if (each.data->depth == 32 && each.data->direct.alpha_mask == 0xff && each.data->direct.red_shift == 16)
            format = each.data->id;
    const auto width = static_cast<std::uint16_t>(size.width());
    const auto height = static_cast<std::uint16_t>(size.height());
    const xcb_pixmap_t pixmap = xcb_generate_id(m_connection);
    xcb_create_pixmap(m_connection, 32, pixmap, m_root, width, height);
    const xcb_render_picture_t picture = xcb_generate_id(m_connection);
    xcb_render_create_picture(m_connection, picture, pixmap, format, 0, nullptr);
    const auto channel = [colour](int shift) { return static_cast<std::uint16_t>((colour >> shift & 0xff) * 0x101); };
    const xcb_rectangle_t whole{0, 0, width, height};
    xcb_render_fill_rectangles(m_connection, XCB_RENDER_PICT_OP_SRC, picture,
                               {channel(16), channel(8), channel(0), channel(24)}, 1, &whole);
    const xcb_cursor_t cursor = xcb_generate_id(m_connection);
    xcb_render_create_cursor(m_connection, cursor, picture, static_cast<std::uint16_t>(hotSpot.x()),
                             static_cast<std::uint16_t>(hotSpot.y()));
    xcb_change_window_attributes(m_connection, window, XCB_CW_CURSOR, &cursor);
    xcb_render_free_picture(m_connection, picture);
    xcb_free_pixmap(m_connection, pixmap);
    xcb_free_cursor(m_connection, cursor);
    finish();
}

void ScreenClient::warpPointer(QPoint place) {
    xcb_warp_pointer(m_connection, XCB_WINDOW_NONE, m_root, 0, 0, 0, 0, static_cast<std::int16_t>(place.x()),
                     static_cast<std::int16_t>(place.y()));
    finish();
}

QImage ScreenClient::screen(const QRect &area) const {
    const xcb_rectangle_t place = rectOf(area);
    const Reply<xcb_get_image_reply_t> answer(
        xcb_get_image_reply(m_connection,
                            xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, place.x, place.y,
                                          place.width, place.height, ~0U),
                            nullptr),
        &std::free);
    if (!answer)
        return {};
    return QImage(xcb_get_image_data(answer.get()), area.width(), area.height(), QImage::Format_RGB32).copy();
}

QRect ScreenClient::wholeScreen() const {
    const Reply<xcb_get_geometry_reply_t> root(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, m_root), nullptr), &std::free);
    return {0, 0, root->width, root->height};
}

int ScreenClient::resourcesOfOthers() const {
    const Reply<xcb_res_query_clients_reply_t> clients(
        xcb_res_query_clients_reply(m_connection, xcb_res_query_clients(m_connection), nullptr), &std::free);
    const std::uint32_t own = xcb_get_setup(m_connection)->resource_id_base;
    int all = 0;
    for (auto each = xcb_res_query_clients_clients_iterator(clients.get()); each.rem > 0; xcb_res_client_next(&each)) {
        if (each.data->resource_base == own)
            continue;
        const Reply<xcb_res_query_client_resources_reply_t> kinds(
            xcb_res_query_client_resources_reply(
                m_connection, xcb_res_query_client_resources(m_connection, each.data->resource_base), nullptr),
            &std::free);
        if (!kinds)
            continue;
        for (auto kind = xcb_res_query_client_resources_types_iterator(kinds.get()); kind.rem > 0;
             xcb_res_type_next(&kind))
            all += static_cast<int>(kind.data->count);
    }
    return all;
}

} // namespace tavrine::testing
