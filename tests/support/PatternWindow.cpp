#include "support/PatternWindow.h"

#include <cstdlib>
#include <memory>
#include <vector>

#include <xcb/xcb.h>

namespace tavrine::testing {
namespace {

void finish(xcb_connection_t *connection) {
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

} // namespace

PatternWindow::PatternWindow() : m_connection(xcb_connect(nullptr, nullptr)) {
    const xcb_screen_t &screen = *xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    m_root = screen.root;
    m_screen = {0, 0, screen.width_in_pixels, screen.height_in_pixels};
    // A background, so that the server paints it again whenever something above goes.
    const xcb_pixmap_t pattern = xcb_generate_id(m_connection);
    const xcb_gcontext_t context = xcb_generate_id(m_connection);
    xcb_create_pixmap(m_connection, 24, pattern, m_root, screen.width_in_pixels, screen.height_in_pixels);
    xcb_create_gc(m_connection, context, pattern, 0, nullptr);
    std::vector<uint32_t> line(screen.width_in_pixels);
    for (int y = 0; y < m_screen.height(); ++y) {
        for (int x = 0; x < m_screen.width(); ++x)
            line[static_cast<size_t>(x)] = colourAt(x, y);
        xcb_put_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pattern, context, screen.width_in_pixels, 1, 0,
                      static_cast<int16_t>(y), 0, 24, static_cast<uint32_t>(line.size() * 4),
                      reinterpret_cast<const uint8_t *>(line.data()));
    }
    m_window = xcb_generate_id(m_connection);
    const uint32_t values[] = {pattern, 1};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, m_root, 0, 0, screen.width_in_pixels,
                      screen.height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual,
                      XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(m_connection, m_window);
    xcb_free_pixmap(m_connection, pattern);
    finish(m_connection);
}

PatternWindow::~PatternWindow() {
    xcb_disconnect(m_connection);
}

QImage PatternWindow::expected(const QRect &area) {
    QImage image(area.size(), QImage::Format_RGB32);
    for (int y = 0; y < area.height(); ++y)
        for (int x = 0; x < area.width(); ++x)
            image.setPixel(x, y, 0xff000000U | colourAt(area.x() + x, area.y() + y));
    return image;
}

unsigned int PatternWindow::addWindow(const QRect &area, uint32_t colour) {
    const xcb_window_t window = xcb_generate_id(m_connection);
    const uint32_t values[] = {colour, 1};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_root, static_cast<int16_t>(area.x()),
                      static_cast<int16_t>(area.y()), static_cast<uint16_t>(area.width()),
                      static_cast<uint16_t>(area.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(m_connection, window);
    finish(m_connection);
    return window;
}

void PatternWindow::removeWindow(unsigned int window) {
    xcb_destroy_window(m_connection, window);
    finish(m_connection);
}

uint32_t PatternWindow::shownAt(int x, int y) const {
    const std::unique_ptr<xcb_get_image_reply_t, void (*)(void *)> answer(
        xcb_get_image_reply(m_connection,
                            xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, static_cast<int16_t>(x),
                                          static_cast<int16_t>(y), 1, 1, ~0U),
                            nullptr),
        &std::free);
    return answer ? *reinterpret_cast<const uint32_t *>(xcb_get_image_data(answer.get())) & 0xffffffU : 0;
}

} // namespace tavrine::testing
