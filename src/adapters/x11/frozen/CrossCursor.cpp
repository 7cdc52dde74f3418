#include "adapters/x11/frozen/CrossCursor.h"

#include "adapters/frozen/CrossPicture.h"

#include <xcb/render.h>

namespace tavrine {
namespace {

constexpr quint8 depthWithAlpha = 32;

xcb_render_pictformat_t alphaFormat(XcbLink &link) {
    const auto answer =
        link.reply<xcb_render_query_pict_formats_reply_t>(xcb_render_query_pict_formats(link.connection()));
    if (!answer)
        return 0;
    for (auto each = xcb_render_query_pict_formats_formats_iterator(answer.get()); each.rem > 0;
         xcb_render_pictforminfo_next(&each)) {
        const auto &direct = each.data->direct;
        if (each.data->depth == depthWithAlpha && direct.alpha_mask == 0xff && direct.alpha_shift == 24 &&
            direct.red_shift == 16 && direct.green_shift == 8 && direct.blue_shift == 0)
            return each.data->id;
    }
    return 0;
}

xcb_cursor_t plainCross(XcbLink &link) {
    constexpr quint16 crosshairGlyph = 34; // XC_crosshair of X11/cursorfont.h
    constexpr char fontName[] = "cursor";
    auto *const connection = link.connection();
    const xcb_font_t font = link.newId();
    const xcb_cursor_t cursor = link.newId();
    xcb_open_font(connection, font, sizeof fontName - 1, fontName);
    xcb_create_glyph_cursor(connection, cursor, font, font, crosshairGlyph, crosshairGlyph + 1, 0, 0, 0, 0xffff, 0xffff,
                            0xffff);
    xcb_close_font(connection, font);
    return cursor;
}

} // namespace

xcb_cursor_t crossCursor(XcbLink &link, double scale) {
    auto *const connection = link.connection();
    const auto *const extension = xcb_get_extension_data(connection, &xcb_render_id);
    const xcb_render_pictformat_t format = extension && extension->present ? alphaFormat(link) : 0;
    if (!format)
        return plainCross(link);
    const CrossPicture picture = CrossPicture::make(scale);
    const auto side = static_cast<quint16>(picture.side);
    const xcb_pixmap_t pixmap = link.newId();
    const xcb_gcontext_t context = link.newId();
    const xcb_render_picture_t source = link.newId();
    const xcb_cursor_t cursor = link.newId();
    xcb_create_pixmap(connection, depthWithAlpha, pixmap, link.root(), side, side);
    xcb_create_gc(connection, context, pixmap, 0, nullptr);
    xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, side, side, 0, 0, 0, depthWithAlpha,
                  static_cast<quint32>(picture.pixels.size() * sizeof(quint32)),
                  reinterpret_cast<const quint8 *>(picture.pixels.data()));
    xcb_render_create_picture(connection, source, pixmap, format, 0, nullptr);
    xcb_render_create_cursor(connection, cursor, source, side / 2, side / 2);
    xcb_render_free_picture(connection, source);
    xcb_free_gc(connection, context);
    xcb_free_pixmap(connection, pixmap);
    return cursor;
}

} // namespace tavrine
