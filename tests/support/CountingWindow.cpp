#include "support/CountingWindow.h"

#include <algorithm>
#include <cstdlib>

#include <xcb/xcb.h>

namespace tavrine::testing {
namespace {

constexpr int bits = CountingWindow::blocks * CountingWindow::blocks / 2;

void finish(xcb_connection_t *connection) {
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

/// Where a bit is shown; from `bits` on are those of the opposite pattern.
QRect blockOf(int bit, QSize size) {
    const QSize block = size / CountingWindow::blocks;
    return {QPoint(bit % CountingWindow::blocks * block.width(), bit / CountingWindow::blocks * block.height()), block};
}

bool isWhite(int bit, int number) {
    return ((number >> bit % bits & 1) != 0) == (bit < bits);
}

} // namespace

CountingWindow::CountingWindow(const QRect &area, std::chrono::milliseconds interval)
    : m_connection(xcb_connect(nullptr, nullptr)), m_size(area.size()), m_interval(interval) {
    const xcb_screen_t &screen = *xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    const auto width = static_cast<std::uint16_t>(area.width());
    const auto height = static_cast<std::uint16_t>(area.height());
    m_window = xcb_generate_id(m_connection);
    const std::uint32_t values[] = {screen.black_pixel, 1};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, screen.root, static_cast<std::int16_t>(area.x()),
                      static_cast<std::int16_t>(area.y()), width, height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(m_connection, m_window);
    m_pixmap = xcb_generate_id(m_connection);
    xcb_create_pixmap(m_connection, screen.root_depth, m_pixmap, m_window, width, height);
    for (const auto &[context, colour] : {std::pair(&m_black, screen.black_pixel), {&m_white, screen.white_pixel}}) {
        *context = xcb_generate_id(m_connection);
        const std::uint32_t with[] = {colour, 0};
        xcb_create_gc(m_connection, *context, m_window, XCB_GC_FOREGROUND | XCB_GC_GRAPHICS_EXPOSURES, with);
    }
    finish(m_connection);
}

CountingWindow::~CountingWindow() {
    end();
    xcb_disconnect(m_connection);
}

void CountingWindow::begin() {
    m_thread = std::thread([this] {
        for (int number = 0; !m_isOver; ++number) {
            const auto next = Clock::now() + m_interval;
            draw(number);
            std::this_thread::sleep_until(next);
        }
    });
}

void CountingWindow::end() {
    m_isOver = true;
    if (m_thread.joinable())
        m_thread.join();
}

void CountingWindow::draw(int number) {
    const xcb_rectangle_t whole{0, 0, static_cast<std::uint16_t>(m_size.width()),
                                static_cast<std::uint16_t>(m_size.height())};
    std::vector<xcb_rectangle_t> white;
    for (int bit = 0; bit < 2 * bits; ++bit)
        if (const QRect block = blockOf(bit, m_size); isWhite(bit, number))
            white.push_back({static_cast<std::int16_t>(block.x()), static_cast<std::int16_t>(block.y()),
                             static_cast<std::uint16_t>(block.width()), static_cast<std::uint16_t>(block.height())});
    xcb_poly_fill_rectangle(m_connection, m_pixmap, m_black, 1, &whole);
    xcb_poly_fill_rectangle(m_connection, m_pixmap, m_white, static_cast<std::uint32_t>(white.size()), white.data());
    const auto before = Clock::now();
    xcb_copy_area(m_connection, m_pixmap, m_window, m_black, 0, 0, 0, 0, whole.width, whole.height);
    finish(m_connection);
    const std::lock_guard lock(m_mutex);
    m_draws.push_back({before, Clock::now()});
}

std::vector<CountingWindow::Draw> CountingWindow::draws() const {
    const std::lock_guard lock(m_mutex);
    return m_draws;
}

CountingWindow::Clock::duration CountingWindow::lateness() const {
    const auto all = draws();
    Clock::duration late{};
    for (std::size_t i = 1; i < all.size(); ++i)
        late += std::max<Clock::duration>(all[i].after - all[i - 1].before - m_interval, {});
    return late;
}

CountingWindow::Clock::duration CountingWindow::longestLateness() const {
    const auto all = draws();
    Clock::duration longest{};
    for (std::size_t i = 1; i < all.size(); ++i)
        longest = std::max<Clock::duration>(longest, all[i].after - all[i - 1].before - m_interval);
    return longest;
}

std::optional<int> CountingWindow::numberIn(const unsigned char *pixels, QSize size) {
    int number = 0;
    for (int bit = 0; bit < 2 * bits; ++bit) {
        const QPoint middle = blockOf(bit, size).center();
        const int value = pixels[3 * (middle.y() * size.width() + middle.x()) + 1];
        if (value > 80 && value < 175)
            return std::nullopt;
        const bool isOne = (value >= 175) == (bit < bits);
        if (bit < bits)
            number |= isOne ? 1 << bit : 0;
        else if (isOne != ((number >> (bit - bits) & 1) != 0))
            return std::nullopt;
    }
    return number;
}

} // namespace tavrine::testing
