#include "adapters/wayland/WaylandIdleKeeper.h"

#include "adapters/wayland/ClearBuffer.h"
#include "adapters/wayland/LayerShellEnd.h"
#include "adapters/wayland/WaylandClient.h"

#include <utility>

#include <wayland/idle-inhibit-unstable-v1.h>

namespace tavrine {
namespace {

constexpr int compositorVersion = 1;

} // namespace

class WaylandIdleKeeper::Pixel {
public:
    Pixel(std::shared_ptr<WaylandReader> reader, std::function<void()> shown)
        : m_client(std::move(reader)), m_shown(std::move(shown)) {
        WaylandLink &link = m_client.link();
        m_compositor = link.bind<wl_compositor>(wl_compositor_interface, compositorVersion);
        m_layers = link.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, 1);
        m_inhibitors = link.bind<zwp_idle_inhibit_manager_v1>(zwp_idle_inhibit_manager_v1_interface, 1);
        if (!canShow())
            return;
        link.setOnGlobal([this](const WaylandLink::Global &, bool) {
            if (m_isWanted)
                show();
        });
    }

    ~Pixel() {
        hide();
        if (m_inhibitors)
            zwp_idle_inhibit_manager_v1_destroy(m_inhibitors);
        letLayerShellGo(m_layers);
        if (m_compositor)
            wl_compositor_destroy(m_compositor);
        m_client.flush();
    }
    Pixel(const Pixel &) = delete;
    Pixel &operator=(const Pixel &) = delete;

    [[nodiscard]] bool canShow() const { return m_compositor && m_layers && m_inhibitors && m_buffer.get(); }
    [[nodiscard]] bool isShown() const { return m_isShown && m_client.isConnected(); }
    [[nodiscard]] bool isWanted() const { return m_isWanted; }
    void setWanted(bool isWanted) {
        m_isWanted = isWanted;
        if (isWanted)
            show();
        else
            hide();
        m_client.flush();
    }

private:
    void show() {
        if (m_surface || !canShow() || !hasOutput())
            return;
        using Role = zwlr_layer_surface_v1;
        static constexpr zwlr_layer_surface_v1_listener listener{
            .configure = [](void *self, Role *, std::uint32_t serial, std::uint32_t,
                            std::uint32_t) { static_cast<Pixel *>(self)->draw(serial); },
            .closed = [](void *self, Role *) { static_cast<Pixel *>(self)->showAgain(); }};
        m_surface = wl_compositor_create_surface(m_compositor);
        m_role = zwlr_layer_shell_v1_get_layer_surface(m_layers, m_surface, nullptr,
                                                       ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND, "tavrine");
        zwlr_layer_surface_v1_add_listener(m_role, &listener, this);
        zwlr_layer_surface_v1_set_size(m_role, 1, 1);
        wl_region *const nowhere = wl_compositor_create_region(m_compositor);
        wl_surface_set_input_region(m_surface, nowhere);
        wl_region_destroy(nowhere);
        m_inhibitor = zwp_idle_inhibit_manager_v1_create_inhibitor(m_inhibitors, m_surface);
        wl_surface_commit(m_surface);
    }

    void draw(std::uint32_t serial) {
        zwlr_layer_surface_v1_ack_configure(m_role, serial);
        wl_surface_attach(m_surface, m_buffer.get(), 0, 0);
        wl_surface_commit(m_surface);
        m_client.flush();
        if (!std::exchange(m_isShown, true))
            m_shown();
    }

    /// Its output has gone. Without another one it waits: what is shown nowhere is closed at once, again and again.
    void showAgain() {
        hide();
        show();
        m_client.flush();
    }

    void hide() {
        if (!m_surface)
            return;
        zwp_idle_inhibitor_v1_destroy(m_inhibitor);
        zwlr_layer_surface_v1_destroy(m_role);
        wl_surface_destroy(std::exchange(m_surface, nullptr));
        m_isShown = false;
    }

    [[nodiscard]] bool hasOutput() { return m_client.link().find(wl_output_interface.name) != nullptr; }

    WaylandClient m_client;
    ClearBuffer m_buffer{m_client.link()};
    std::function<void()> m_shown;
    wl_compositor *m_compositor = nullptr;
    zwlr_layer_shell_v1 *m_layers = nullptr;
    zwp_idle_inhibit_manager_v1 *m_inhibitors = nullptr;
    wl_surface *m_surface = nullptr;
    zwlr_layer_surface_v1 *m_role = nullptr;
    zwp_idle_inhibitor_v1 *m_inhibitor = nullptr;
    bool m_isWanted = false;
    bool m_isShown = false;
};

WaylandIdleKeeper::WaylandIdleKeeper(std::shared_ptr<WaylandReader> reader) : m_reader(std::move(reader)) {}
WaylandIdleKeeper::~WaylandIdleKeeper() = default;

void WaylandIdleKeeper::want(const PowerNeeds &needs, const QString & /*why*/) {
    if (needs.display && !m_pixel)
        m_pixel = std::make_unique<Pixel>(m_reader, [this] { onShown(); });
    if (m_pixel && m_pixel->isWanted() != needs.display)
        m_pixel->setWanted(needs.display);
}

/// In a turn of its own: a keeper tells so.
void WaylandIdleKeeper::onShown() {
    QMetaObject::invokeMethod(
        this, [this] { changed(); }, Qt::QueuedConnection);
}

PowerNeeds WaylandIdleKeeper::held() const {
    return {.display = m_pixel && m_pixel->isShown()};
}

bool WaylandIdleKeeper::isAsking() const {
    return m_pixel && m_pixel->isWanted() && m_pixel->canShow() && !m_pixel->isShown();
}

} // namespace tavrine
