#include "adapters/wayland/PopupRole.h"

#include "adapters/wayland/LayerShell.h"

#include <QWindow>

#include <algorithm>

#include <wayland/wlr-layer-shell-unstable-v1.h>
#include <wayland/xdg-shell.h>

namespace tavrine {

PopupRole::PopupRole(LayerShell &shell, QWindow &window, const Parent &parent, const QRect &rect,
                     std::function<void()> onDone)
    : m_shell(shell), m_onDone(std::move(onDone)), m_pixels(shell.popups() ? shell.surfaceOf(window) : nullptr) {
    if (!m_pixels)
        return;
    // As with the window itself: nothing of the toolkit's happens until the first answer.
    wl_event_queue *queue = wl_display_create_queue(shell.display());
    take(rect, parent, queue);
    wl_surface_commit(m_pixels);
    (void)shell.waitOn(queue, [this] { return m_isConfigured; });
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(m_popup), nullptr);
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(m_surface), nullptr);
    wl_display_dispatch_queue_pending(shell.display(), queue);
    wl_event_queue_destroy(queue);
}

void PopupRole::take(const QRect &rect, const Parent &parent, wl_event_queue *queue) {
    static constexpr xdg_surface_listener surfaceListener{
        .configure = [](void *data, xdg_surface *surface, std::uint32_t serial) {
            xdg_surface_ack_configure(surface, serial);
            static_cast<PopupRole *>(data)->m_isConfigured = true;
        }};
    static constexpr xdg_popup_listener popupListener{
        .configure = [](void *, xdg_popup *, std::int32_t, std::int32_t, std::int32_t, std::int32_t) {},
        .popup_done =
            [](void *data, xdg_popup *) {
                const auto tell = static_cast<PopupRole *>(data)->m_onDone; // it may end the role
                tell();
            },
        .repositioned = [](void *, xdg_popup *, std::uint32_t) {},
    };
    auto *base = static_cast<xdg_wm_base *>(wl_proxy_create_wrapper(m_shell.popups()));
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(base), queue);
    m_surface = xdg_wm_base_get_xdg_surface(base, m_pixels);
    xdg_surface_add_listener(m_surface, &surfaceListener, this);
    xdg_positioner *place = xdg_wm_base_create_positioner(base);
    wl_proxy_wrapper_destroy(base);
    xdg_positioner_set_size(place, std::max(1, rect.width()), std::max(1, rect.height()));
    xdg_positioner_set_anchor_rect(place, rect.x(), rect.y(), 1, 1);
    xdg_positioner_set_anchor(place, XDG_POSITIONER_ANCHOR_TOP_LEFT);
    xdg_positioner_set_gravity(place, XDG_POSITIONER_GRAVITY_BOTTOM_RIGHT);
    m_popup = xdg_surface_get_popup(m_surface, parent.popup, place);
    xdg_popup_add_listener(m_popup, &popupListener, this);
    xdg_positioner_destroy(place);
    if (parent.layer)
        zwlr_layer_surface_v1_get_popup(parent.layer, m_popup);
}

PopupRole::~PopupRole() {
    if (m_popup)
        xdg_popup_destroy(m_popup);
    if (m_surface)
        xdg_surface_destroy(m_surface);
}

} // namespace tavrine
