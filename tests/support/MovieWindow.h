#pragma once

#include <QColor>

#include <cstdint>
#include <cstdlib>

#include <xcb/xcb.h>

namespace tavrine::test {

/// A blue window of 160 by 90 pixels, in which somebody else may show something.
class MovieWindow {
public:
    static constexpr std::uint16_t width = 160;
    static constexpr std::uint16_t height = 90;

    MovieWindow() {
        const xcb_screen_t *const screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
        m_window = xcb_generate_id(m_connection);
        const std::uint32_t values[] = {0x0000ff, 1};
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, screen->root, 20, 20, width, height, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
        xcb_map_window(m_connection, m_window);
        settle();
    }
    ~MovieWindow() { xcb_disconnect(m_connection); }
    MovieWindow(const MovieWindow &) = delete;
    MovieWindow &operator=(const MovieWindow &) = delete;

    [[nodiscard]] xcb_window_t id() const { return m_window; }

    void resize(std::uint32_t newWidth, std::uint32_t newHeight) {
        const std::uint32_t values[] = {newWidth, newHeight};
        xcb_configure_window(m_connection, m_window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
        settle();
    }

    /// What everybody sees there now.
    [[nodiscard]] QColor color(std::int16_t x = width / 2, std::int16_t y = height / 2) const {
        xcb_get_image_reply_t *const image = xcb_get_image_reply(
            m_connection, xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, x, y, 1, 1, ~0U), nullptr);
        if (!image)
            return {};
        const std::uint8_t *const bytes = xcb_get_image_data(image); // blue, green, red
        const QColor color(bytes[2], bytes[1], bytes[0]);
        std::free(image);
        return color;
    }
    [[nodiscard]] bool isUntouched() const { return color() == QColor(Qt::blue); }

private:
    /// The server has done all that it was asked for.
    void settle() const {
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    }

    xcb_connection_t *m_connection = xcb_connect(nullptr, nullptr);
    xcb_window_t m_window = 0;
};

/// Of the same kind, as far as an encoder keeps it.
[[nodiscard]] inline bool isLike(const QColor &color, const QColor &other) {
    constexpr int tolerance = 40;
    return std::abs(color.red() - other.red()) < tolerance && std::abs(color.green() - other.green()) < tolerance &&
           std::abs(color.blue() - other.blue()) < tolerance;
}

} // namespace tavrine::test
