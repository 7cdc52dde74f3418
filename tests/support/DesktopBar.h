#pragma once

#include "adapters/wayland/ClearBuffer.h"
#include "adapters/wayland/WaylandLink.h"

#include <wayland/viewporter.h>
#include <wayland/wlr-layer-shell-unstable-v1.h>

namespace tavrine::testing {

/// A panel of the desktop along one edge of the first output, for which others make room.
class DesktopBar {
public:
    enum class Edge { top, bottom, left, right };

    DesktopBar(Edge edge, int thickness) {
        auto *compositor = m_link.bind<wl_compositor>(wl_compositor_interface, 4);
        auto *shell = m_link.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, 3);
        m_viewporter = m_link.bind<wp_viewporter>(wp_viewporter_interface, 1);
        auto *output = m_link.bind<wl_output>(wl_output_interface, 1);
        static constexpr zwlr_layer_surface_v1_listener listener{
            .configure =
                [](void *self, zwlr_layer_surface_v1 *role, std::uint32_t serial, std::uint32_t width,
                   std::uint32_t height) {
                    zwlr_layer_surface_v1_ack_configure(role, serial);
                    static_cast<DesktopBar *>(self)->show(static_cast<int>(width), static_cast<int>(height));
                },
            .closed = [](void *, zwlr_layer_surface_v1 *) {},
        };
        m_surface = wl_compositor_create_surface(compositor);
        auto *role =
            zwlr_layer_shell_v1_get_layer_surface(shell, m_surface, output, ZWLR_LAYER_SHELL_V1_LAYER_TOP, "bar");
        zwlr_layer_surface_v1_add_listener(role, &listener, this);
        const bool isAcross = edge == Edge::top || edge == Edge::bottom;
        const auto size = static_cast<std::uint32_t>(thickness);
        zwlr_layer_surface_v1_set_anchor(role, everyEdge & ~opposite(edge));
        zwlr_layer_surface_v1_set_size(role, isAcross ? 0 : size, isAcross ? size : 0);
        zwlr_layer_surface_v1_set_exclusive_zone(role, thickness);
        wl_surface_commit(m_surface);
        static_cast<void>(m_link.finish() && m_link.finish());
    }
    DesktopBar(const DesktopBar &) = delete;
    DesktopBar &operator=(const DesktopBar &) = delete;

    [[nodiscard]] bool isThere() const { return m_isThere; }

private:
    static constexpr std::uint32_t everyEdge = 15;

    static std::uint32_t opposite(Edge edge) {
        switch (edge) {
        case Edge::top:
            return ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM;
        case Edge::bottom:
            return ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP;
        case Edge::left:
            return ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
        case Edge::right:
            break;
        }
        return ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT;
    }
    void show(int width, int height) {
        wp_viewport_set_destination(wp_viewporter_get_viewport(m_viewporter, m_surface), width, height);
        wl_surface_attach(m_surface, m_pixel.get(), 0, 0);
        wl_surface_damage(m_surface, 0, 0, width, height);
        wl_surface_commit(m_surface);
        m_isThere = true;
    }

    WaylandLink m_link;
    ClearBuffer m_pixel{m_link};
    wp_viewporter *m_viewporter = nullptr;
    wl_surface *m_surface = nullptr;
    bool m_isThere = false;
};

} // namespace tavrine::testing
