#include "support/WaylandPattern.h"

#include <algorithm>
#include <cmath>

#include <wayland/viewporter.h>
#include <wayland/wlr-layer-shell-unstable-v1.h>
#include <wayland/xdg-shell.h>

namespace tavrine::testing {

struct WaylandPattern::Board {
    wl_surface *surface = nullptr;
    zwlr_layer_surface_v1 *layer = nullptr;
    xdg_surface *window = nullptr;
    xdg_toplevel *toplevel = nullptr;
    wp_viewport *viewport = nullptr;
    std::unique_ptr<ShmBuffer> buffer;
    QSize points;
    bool isActive = false;

    ~Board() {
        wp_viewport_destroy(viewport);
        if (layer)
            zwlr_layer_surface_v1_destroy(layer);
        if (toplevel)
            xdg_toplevel_destroy(toplevel);
        if (window)
            xdg_surface_destroy(window);
        wl_surface_destroy(surface);
    }
    void becomeLayer(zwlr_layer_shell_v1 *layers, wl_output *output);
    void becomeWindow(xdg_wm_base *windows, wl_output *output);
    void commit(const QRect &area) const {
        wl_surface_attach(surface, buffer->buffer(), 0, 0);
        wl_surface_damage_buffer(surface, area.x(), area.y(), area.width(), area.height());
        wl_surface_commit(surface);
    }
};

void WaylandPattern::Board::becomeLayer(zwlr_layer_shell_v1 *layers, wl_output *output) {
    static constexpr zwlr_layer_surface_v1_listener listener{
        .configure =
            [](void *board, zwlr_layer_surface_v1 *configured, std::uint32_t serial, std::uint32_t width,
               std::uint32_t height) {
                zwlr_layer_surface_v1_ack_configure(configured, serial);
                static_cast<Board *>(board)->points = QSize(static_cast<int>(width), static_cast<int>(height));
            },
        .closed = [](void *, zwlr_layer_surface_v1 *) {},
    };
    layer =
        zwlr_layer_shell_v1_get_layer_surface(layers, surface, output, ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND, "pattern");
    zwlr_layer_surface_v1_add_listener(layer, &listener, this);
    zwlr_layer_surface_v1_set_anchor(layer, 15); // all edges
    zwlr_layer_surface_v1_set_exclusive_zone(layer, -1);
}

void WaylandPattern::Board::becomeWindow(xdg_wm_base *windows, wl_output *output) {
    static constexpr xdg_surface_listener surfaceListener{
        .configure = [](void *, xdg_surface *configured, std::uint32_t serial) {
            xdg_surface_ack_configure(configured, serial);
        }};
    static constexpr xdg_toplevel_listener toplevelListener{
        .configure =
            [](void *self, xdg_toplevel *, std::int32_t width, std::int32_t height, wl_array *states) {
                auto *const board = static_cast<Board *>(self);
                if (width > 0 && height > 0)
                    board->points = QSize(width, height);
                const auto *const first = static_cast<const std::uint32_t *>(states->data);
                const auto *const end = first + states->size / sizeof *first;
                board->isActive = std::find(first, end, XDG_TOPLEVEL_STATE_ACTIVATED) != end;
            },
        .close = [](void *, xdg_toplevel *) {},
        .configure_bounds = [](void *, xdg_toplevel *, std::int32_t, std::int32_t) {},
        .wm_capabilities = [](void *, xdg_toplevel *, wl_array *) {}};
    window = xdg_wm_base_get_xdg_surface(windows, surface);
    xdg_surface_add_listener(window, &surfaceListener, this);
    toplevel = xdg_surface_get_toplevel(window);
    xdg_toplevel_add_listener(toplevel, &toplevelListener, this);
    xdg_toplevel_set_title(toplevel, "A pattern");
    xdg_toplevel_set_fullscreen(toplevel, output);
}

QRgb WaylandPattern::colourAt(int output, int x, int y) {
    return qRgb((x * 7 + output * 50) & 0xff, (y * 5) & 0xff, ((x >> 6) * 16 + (y >> 6)) & 0xff);
}

QImage WaylandPattern::expected(int output, const QRect &area) {
    QImage image(area.size(), QImage::Format_RGB32);
    for (int y = 0; y < area.height(); ++y) {
        auto *const line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < area.width(); ++x)
            line[x] = colourAt(output, area.x() + x, area.y() + y);
    }
    return image;
}

WaylandPattern::WaylandPattern() : m_outputs(m_link) {
    m_compositor = m_link.bind<wl_compositor>(wl_compositor_interface, 4);
    m_shm = m_link.bind<wl_shm>(wl_shm_interface, 1);
    m_layers = m_link.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, 3);
    m_viewporter = m_link.bind<wp_viewporter>(wp_viewporter_interface, 1);
    m_windows = m_layers ? nullptr : m_link.bind<xdg_wm_base>(xdg_wm_base_interface, 1);
    if (!m_compositor || !m_shm || !(m_layers || m_windows) || !m_viewporter || !m_link.finish())
        return;
    static constexpr xdg_wm_base_listener answer{
        .ping = [](void *, xdg_wm_base *windows, std::uint32_t serial) { xdg_wm_base_pong(windows, serial); }};
    if (m_windows)
        xdg_wm_base_add_listener(m_windows, &answer, nullptr);
    for (const WaylandOutput &output : m_outputs.all()) {
        auto board = std::make_unique<Board>();
        board->surface = wl_compositor_create_surface(m_compositor);
        if (m_layers)
            board->becomeLayer(m_layers, output.proxy);
        else
            board->becomeWindow(m_windows, output.proxy);
        board->viewport = wp_viewporter_get_viewport(m_viewporter, board->surface);
        wl_surface_commit(board->surface);
        m_boards.push_back(std::move(board));
    }
    m_isThere = m_link.finish();
    for (int i = 0; i < static_cast<int>(m_boards.size()) && m_isThere; ++i) {
        Board &board = *m_boards[static_cast<size_t>(i)];
        const QSize size = outputs()[static_cast<size_t>(i)].pixels();
        board.buffer = ShmBuffer::make(m_shm, WL_SHM_FORMAT_XRGB8888, size, size.width() * 4);
        const PixelsToPaint pixels = board.buffer->memory()->pixels();
        for (int y = 0; y < size.height(); ++y)
            for (int x = 0; x < size.width(); ++x)
                pixels.line(y)[x] = colourAt(i, x, y);
        // Points are whole numbers: a surface may end a pixel before its output does.
        const double scale = outputs()[static_cast<size_t>(i)].scale();
        const auto shown = [scale](int points, int limit) {
            return wl_fixed_from_int(std::min(static_cast<int>(std::lround(points * scale)), limit));
        };
        wp_viewport_set_source(board.viewport, 0, 0, shown(board.points.width(), size.width()),
                               shown(board.points.height(), size.height()));
        wp_viewport_set_destination(board.viewport, board.points.width(), board.points.height());
        board.commit(pixels.rect());
    }
    m_isThere = m_isThere && m_link.finish();
}

WaylandPattern::~WaylandPattern() {
    m_boards.clear();
    static_cast<void>(m_link.finish());
}

bool WaylandPattern::isActive() const {
    return std::ranges::any_of(m_boards, [](const auto &board) { return board->isActive; });
}

void WaylandPattern::paint(int output, const QRect &area, QRgb colour) {
    const Board &board = *m_boards.at(static_cast<size_t>(output));
    for (int y = area.top(); y <= area.bottom(); ++y)
        std::fill_n(board.buffer->memory()->pixels().line(y) + area.x(), area.width(), colour);
    board.commit(area);
    static_cast<void>(m_link.finish());
}

} // namespace tavrine::testing
