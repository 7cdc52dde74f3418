#include "adapters/wayland/LayerShell.h"

#include "adapters/wayland/HiddenWindows.h"
#include "adapters/wayland/LayerRole.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <poll.h>
#include <wayland/viewporter.h>
#include <wayland/wlr-layer-shell-unstable-v1.h>
#include <wayland/xdg-shell.h>

namespace tavrine {
namespace {

using Clock = std::chrono::steady_clock;

QPlatformNativeInterface *toolkit() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"))
               ? QGuiApplication::platformNativeInterface()
               : nullptr;
}

/// What of the registry is wanted.
struct Wanted {
    wl_compositor *compositor = nullptr;
    zwlr_layer_shell_v1 *shell = nullptr;
    xdg_wm_base *popups = nullptr;
    wl_data_device_manager *dragging = nullptr;
    wp_viewporter *viewporter = nullptr;
    wl_shm *memory = nullptr;
};

void take(void *data, wl_registry *registry, std::uint32_t name, const char *interface, std::uint32_t version) {
    auto &wanted = *static_cast<Wanted *>(data);
    const auto bind = [&](const wl_interface &kind, std::uint32_t highest) {
        return wl_registry_bind(registry, name, &kind, std::min(version, highest));
    };
    if (std::strcmp(interface, wl_compositor_interface.name) == 0)
        wanted.compositor = static_cast<wl_compositor *>(bind(wl_compositor_interface, 4));
    else if (std::strcmp(interface, zwlr_layer_shell_v1_interface.name) == 0)
        wanted.shell = static_cast<zwlr_layer_shell_v1 *>(bind(zwlr_layer_shell_v1_interface, 4));
    else if (std::strcmp(interface, xdg_wm_base_interface.name) == 0)
        wanted.popups = static_cast<xdg_wm_base *>(bind(xdg_wm_base_interface, 1));
    else if (std::strcmp(interface, wl_data_device_manager_interface.name) == 0)
        wanted.dragging = static_cast<wl_data_device_manager *>(bind(wl_data_device_manager_interface, 3));
    else if (std::strcmp(interface, wp_viewporter_interface.name) == 0)
        wanted.viewporter = static_cast<wp_viewporter *>(bind(wp_viewporter_interface, 1));
    else if (std::strcmp(interface, wl_shm_interface.name) == 0)
        wanted.memory = static_cast<wl_shm *>(bind(wl_shm_interface, 1));
}

} // namespace

void LayerShell::prepareToolkit() {
    qputenv("QT_QPA_PLATFORM", "wayland");
    // A window that by-passes the window manager is a bare surface, to which this program gives its role.
    qputenv("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT", "1");
    // Else it takes every window to be at its screen's corner, and what the pointer does to be there.
    qputenv("QT_WAYLAND_DISABLE_FIXED_POSITIONS", "1");
    // Else Mesa and its compiler are loaded: 50 MB for what is painted in memory anyway.
    qputenv("QT_WAYLAND_CLIENT_BUFFER_INTEGRATION", "none");
}

LayerShell::LayerShell() {
    auto *native = toolkit();
    m_display = native ? static_cast<wl_display *>(native->nativeResourceForIntegration("wl_display")) : nullptr;
    if (!m_display)
        return;
    hiddenWindows::guard();
    static constexpr wl_registry_listener listener{.global = take,
                                                   .global_remove = [](void *, wl_registry *, std::uint32_t) {}};
    wl_event_queue *queue = wl_display_create_queue(m_display);
    auto *wrapper = static_cast<wl_display *>(wl_proxy_create_wrapper(m_display));
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(wrapper), queue);
    Wanted wanted;
    m_registry = wl_display_get_registry(wrapper);
    wl_registry_add_listener(m_registry, &listener, &wanted);
    static constexpr wl_callback_listener told{
        .done = [](void *done, wl_callback *, std::uint32_t) { *static_cast<bool *>(done) = true; }};
    bool isTold = false;
    wl_callback *callback = wl_display_sync(wrapper);
    wl_callback_add_listener(callback, &told, &isTold);
    const bool isThere = waitOn(queue, [&] { return isTold; });
    wl_callback_destroy(callback);
    wl_proxy_wrapper_destroy(wrapper);
    wl_registry_destroy(std::exchange(m_registry, nullptr));
    m_compositor = wanted.compositor;
    m_shell = isThere ? wanted.shell : nullptr;
    m_popups = wanted.popups;
    m_dragging = wanted.dragging;
    m_viewporter = wanted.viewporter;
    m_memory = wanted.memory;
    // From here on the toolkit calls their handlers.
    for (void *each :
         {static_cast<void *>(m_compositor), static_cast<void *>(wanted.shell), static_cast<void *>(m_popups),
          static_cast<void *>(m_dragging), static_cast<void *>(m_viewporter), static_cast<void *>(m_memory)})
        if (each)
            wl_proxy_set_queue(static_cast<wl_proxy *>(each), nullptr);
    if (m_popups) {
        static constexpr xdg_wm_base_listener alive{
            .ping = [](void *, xdg_wm_base *base, std::uint32_t serial) { xdg_wm_base_pong(base, serial); }};
        xdg_wm_base_add_listener(m_popups, &alive, nullptr);
    }
    wl_event_queue_destroy(queue);
}

wl_surface *LayerShell::surfaceOf(QWindow &window) const {
    auto *native = m_shell ? toolkit() : nullptr;
    if (!native)
        return nullptr;
    const auto surface = [&] {
        return window.handle() ? static_cast<wl_surface *>(native->nativeResourceForWindow("surface", &window))
                               : nullptr;
    };
    if (!surface()) {
        window.destroy();
        window.create();
    }
    return surface();
}

wl_output *LayerShell::outputOf(QScreen &screen) const {
    auto *native = toolkit();
    return native ? static_cast<wl_output *>(native->nativeResourceForScreen("output", &screen)) : nullptr;
}

void LayerShell::setInputRegion(wl_surface *surface, const QRegion *region) const {
    if (!region)
        return wl_surface_set_input_region(surface, nullptr);
    wl_region *input = wl_compositor_create_region(m_compositor);
    for (const QRect &part : *region)
        wl_region_add(input, part.x(), part.y(), part.width(), part.height());
    wl_surface_set_input_region(surface, input);
    wl_region_destroy(input);
}

wl_data_device *LayerShell::makeDataDevice() const {
    auto *native = m_dragging ? toolkit() : nullptr;
    auto *seat = native ? static_cast<wl_seat *>(native->nativeResourceForIntegration("wl_seat")) : nullptr;
    return seat ? wl_data_device_manager_get_data_device(m_dragging, seat) : nullptr;
}

void LayerShell::showAnew() const {
    const auto roles = m_roles; // some go
    for (const LayerRole *role : roles)
        if (std::find(m_roles.begin(), m_roles.end(), role) != m_roles.end())
            role->retire();
}

void LayerShell::setTaken(const void *window, const QRegion &part) {
    if (part.isEmpty())
        m_taken.erase(window);
    else
        m_taken[window] = part;
    if (m_changed)
        m_changed();
}

QRegion LayerShell::taken() const {
    QRegion all;
    for (const auto &[window, part] : m_taken)
        all += part;
    return all;
}

void LayerShell::setDragging(bool is) {
    m_isDragging = is;
    if (m_changed)
        m_changed();
}

void LayerShell::flush() const {
    if (m_display)
        wl_display_flush(m_display);
}

bool LayerShell::waitOn(wl_event_queue *queue, const std::function<bool()> &condition) const {
    const auto end = Clock::now() + longestWait;
    while (!condition()) {
        if (wl_display_prepare_read_queue(m_display, queue) != 0) {
            if (wl_display_dispatch_queue_pending(m_display, queue) < 0)
                return false;
            continue;
        }
        wl_display_flush(m_display);
        // What has arrived counts, however late this program gets to it.
        const auto left = std::max(std::chrono::ceil<Wait>(end - Clock::now()), Wait{0});
        pollfd descriptor{wl_display_get_fd(m_display), POLLIN, 0};
        const int found = ::poll(&descriptor, 1, static_cast<int>(left.count()));
        if (found > 0)
            wl_display_read_events(m_display);
        else
            wl_display_cancel_read(m_display);
        if (wl_display_dispatch_queue_pending(m_display, queue) < 0 || found == 0 || (found < 0 && errno != EINTR))
            return condition();
    }
    return true;
}

} // namespace tavrine
