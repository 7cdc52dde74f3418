#include "adapters/wayland/LayerRole.h"

#include "adapters/stream/ToolkitPoints.h"
#include "adapters/wayland/LayerShell.h"

#include <QScreen>
#include <QWindow>

#include <algorithm>

#include <wayland/wlr-layer-shell-unstable-v1.h>

namespace tavrine {
namespace {

constexpr auto nameSpace = "tavrine";
constexpr std::uint32_t corner = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT;
constexpr int overPanelsOfTheDesktop = -1; ///< and neither moved by them nor moving them

std::uint32_t layerOf(const LayerPlace &place) {
    return place.isOverFullScreen ? ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY : ZWLR_LAYER_SHELL_V1_LAYER_TOP;
}

} // namespace

LayerRole::LayerRole(LayerShell &shell, QWindow &window, QScreen &screen, const LayerPlace &place,
                     std::function<void()> onClosed)
    : m_shell(shell), m_screen(&screen), m_factor(toolkitPoints::factor(&screen)), m_onClosed(std::move(onClosed)),
      m_place(place), m_input(QRect(QPoint(), place.rect.size())), m_surface(shell.surfaceOf(window)) {
    m_shell.add(*this);
    if (!m_surface)
        return;
    static constexpr zwlr_layer_surface_v1_listener listener{
        .configure =
            [](void *data, zwlr_layer_surface_v1 *role, std::uint32_t serial, std::uint32_t, std::uint32_t) {
                zwlr_layer_surface_v1_ack_configure(role, serial); // its size is the one that was asked for
                static_cast<LayerRole *>(data)->m_isConfigured = true;
            },
        .closed =
            [](void *data, zwlr_layer_surface_v1 *) {
                const auto tell = static_cast<LayerRole *>(data)->m_onClosed; // it may end the role
                tell();
            },
    };
    // The first answer is waited for on a queue of its own: nothing of the toolkit's happens meanwhile.
    wl_event_queue *queue = wl_display_create_queue(shell.display());
    auto *wrapper = static_cast<zwlr_layer_shell_v1 *>(wl_proxy_create_wrapper(shell.shell()));
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(wrapper), queue);
    m_role =
        zwlr_layer_shell_v1_get_layer_surface(wrapper, m_surface, shell.outputOf(screen), layerOf(place), nameSpace);
    wl_proxy_wrapper_destroy(wrapper);
    zwlr_layer_surface_v1_add_listener(m_role, &listener, this);
    zwlr_layer_surface_v1_set_anchor(m_role, corner);
    zwlr_layer_surface_v1_set_exclusive_zone(m_role, overPanelsOfTheDesktop);
    apply(place);
    (void)shell.waitOn(queue, [this] { return m_isConfigured; });
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(m_role), nullptr);
    wl_display_dispatch_queue_pending(shell.display(), queue);
    wl_event_queue_destroy(queue);
    tellTaken();
}

LayerRole::~LayerRole() {
    m_shell.remove(*this);
    m_shell.setTaken(this, {});
    if (m_role)
        zwlr_layer_surface_v1_destroy(m_role);
}

void LayerRole::setPlace(const LayerPlace &place) {
    if (!m_role || place == m_place)
        return;
    if (place.isOverFullScreen != m_place.isOverFullScreen &&
        zwlr_layer_surface_v1_get_version(m_role) >= ZWLR_LAYER_SURFACE_V1_SET_LAYER_SINCE_VERSION)
        zwlr_layer_surface_v1_set_layer(m_role, layerOf(place));
    m_place = place;
    apply(place);
    tellTaken();
}

void LayerRole::apply(const LayerPlace &place) {
    const QPoint origin = m_screen ? m_screen->geometry().topLeft() : QPoint();
    const QRect at = toolkitPoints::toCompositor(place.rect.translated(-origin), toolkitPoints::factor(m_screen));
    zwlr_layer_surface_v1_set_size(m_role, static_cast<std::uint32_t>(std::max(1, at.width())),
                                   static_cast<std::uint32_t>(std::max(1, at.height())));
    zwlr_layer_surface_v1_set_margin(m_role, at.y(), 0, 0, at.x());
    zwlr_layer_surface_v1_set_keyboard_interactivity(m_role, place.takesKeyboard ? 1 : 0);
    wl_surface_commit(m_surface);
    m_shell.flush();
}

void LayerRole::setInputRegion(const QRegion &region) {
    if (!m_role)
        return;
    m_input = region;
    tellTaken();
    const double factor = toolkitPoints::factor(m_screen);
    QRegion input;
    for (const QRect &part : region)
        input += toolkitPoints::toCompositor(part, factor);
    m_shell.setInputRegion(m_surface, &input);
    wl_surface_commit(m_surface);
    m_shell.flush();
}

void LayerRole::tellTaken() const {
    m_shell.setTaken(this, m_input.translated(m_place.rect.topLeft()));
}

} // namespace tavrine
