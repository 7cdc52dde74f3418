#include "adapters/wayland/FreeParts.h"

#include "adapters/wayland/WaylandLink.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include <wayland/wlr-layer-shell-unstable-v1.h>
#include <wayland/xdg-output-unstable-v1.h>
#include <wayland/xdg-shell.h>

namespace tavrine {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t everyEdge = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                    ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
constexpr int whole = -1; ///< as an exclusive zone: what others take is of no matter
constexpr int free = 0;
constexpr int farBeyond = -20'000; ///< points; no output is that large

/// What all of a question are made with. All goes with the connection, and the compositor takes its side with it.
struct Shells {
    wl_compositor *compositor = nullptr;
    zwlr_layer_shell_v1 *layers = nullptr;
    xdg_wm_base *popups = nullptr;
};

/// A surface over an output, or over what is free of it, with a pop-up that wants to be beyond its upper left corner.
class Cover {
public:
    Cover(const Shells &shells, wl_output *output, int zone) : m_shells(shells) {
        static constexpr zwlr_layer_surface_v1_listener listener{
            .configure =
                [](void *self, zwlr_layer_surface_v1 *role, std::uint32_t serial, std::uint32_t width,
                   std::uint32_t height) {
                    zwlr_layer_surface_v1_ack_configure(role, serial);
                    static_cast<Cover *>(self)->placed({static_cast<int>(width), static_cast<int>(height)});
                },
            .closed = [](void *, zwlr_layer_surface_v1 *) {},
        };
        wl_surface *surface = wl_compositor_create_surface(shells.compositor);
        m_role = zwlr_layer_shell_v1_get_layer_surface(shells.layers, surface, output,
                                                       ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND, "tavrine-measure");
        zwlr_layer_surface_v1_add_listener(m_role, &listener, this);
        zwlr_layer_surface_v1_set_anchor(m_role, everyEdge);
        zwlr_layer_surface_v1_set_exclusive_zone(m_role, zone);
        zwlr_layer_surface_v1_set_size(m_role, 0, 0);
        wl_surface_commit(surface);
    }
    Cover(const Cover &) = delete;
    Cover &operator=(const Cover &) = delete;

    [[nodiscard]] bool isTold() const { return m_corner.has_value(); }
    /// Nothing has changed since: else the one may be from before, and the other from after it.
    [[nodiscard]] bool isSteady() const { return m_isSteady; }
    [[nodiscard]] QSize size() const { return m_size; }
    /// Where in it the pop-up has come to be.
    [[nodiscard]] QPoint corner() const { return m_corner.value_or(QPoint()); }

private:
    void placed(QSize size) {
        if (!m_size.isValid()) {
            m_size = size;
            openPopup();
        }
        m_isSteady = m_isSteady && size == m_size;
    }

    void openPopup() {
        static constexpr xdg_surface_listener surfaceListener{
            .configure = [](void *, xdg_surface *surface, std::uint32_t serial) {
                xdg_surface_ack_configure(surface, serial);
            }};
        static constexpr xdg_popup_listener listener{
            .configure = [](void *self, xdg_popup *, std::int32_t x, std::int32_t y, std::int32_t,
                            std::int32_t) { static_cast<Cover *>(self)->m_corner = QPoint(x, y); },
            .popup_done = [](void *, xdg_popup *) {},
            .repositioned = [](void *, xdg_popup *, std::uint32_t) {},
        };
        wl_surface *surface = wl_compositor_create_surface(m_shells.compositor);
        xdg_surface *base = xdg_wm_base_get_xdg_surface(m_shells.popups, surface);
        xdg_surface_add_listener(base, &surfaceListener, this);
        xdg_positioner *place = xdg_wm_base_create_positioner(m_shells.popups);
        xdg_positioner_set_size(place, 1, 1);
        xdg_positioner_set_anchor_rect(place, 0, 0, 1, 1);
        xdg_positioner_set_anchor(place, XDG_POSITIONER_ANCHOR_TOP_LEFT);
        xdg_positioner_set_gravity(place, XDG_POSITIONER_GRAVITY_BOTTOM_RIGHT);
        xdg_positioner_set_offset(place, farBeyond, farBeyond);
        xdg_positioner_set_constraint_adjustment(place, XDG_POSITIONER_CONSTRAINT_ADJUSTMENT_SLIDE_X |
                                                            XDG_POSITIONER_CONSTRAINT_ADJUSTMENT_SLIDE_Y);
        xdg_popup *popup = xdg_surface_get_popup(base, nullptr, place);
        xdg_popup_add_listener(popup, &listener, this);
        zwlr_layer_surface_v1_get_popup(m_role, popup);
        wl_surface_commit(surface);
    }

    const Shells &m_shells;
    zwlr_layer_surface_v1 *m_role = nullptr;
    QSize m_size;
    bool m_isSteady = true;
    std::optional<QPoint> m_corner;
};

/// One output and what lies over it.
struct Covered {
    QString name;
    std::unique_ptr<Cover> all;
    std::unique_ptr<Cover> rest;

    [[nodiscard]] bool isTold() const { return all->isTold() && rest->isTold(); }
    [[nodiscard]] bool isSteady() const { return all->isSteady() && rest->isSteady(); }
    /// Empty for what cannot be: a compositor may leave the pop-up where it wanted to be.
    [[nodiscard]] QRect freePart() const {
        const QRect part(all->corner() - rest->corner(), rest->size());
        return QRect(QPoint(), all->size()).contains(part) ? part : QRect();
    }
};

class Question {
public:
    explicit Question(Clock::time_point end) : m_end(end), m_link(timeLeft()) {
        m_shells = {m_link.bind<wl_compositor>(wl_compositor_interface, 4),
                    m_link.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, 3),
                    m_link.bind<xdg_wm_base>(xdg_wm_base_interface, 1)};
        auto *manager = m_link.bind<zxdg_output_manager_v1>(zxdg_output_manager_v1_interface, 3);
        if (!m_shells.compositor || !m_shells.layers || !m_shells.popups || !manager)
            return;
        static constexpr xdg_wm_base_listener alive{
            .ping = [](void *, xdg_wm_base *base, std::uint32_t serial) { xdg_wm_base_pong(base, serial); }};
        xdg_wm_base_add_listener(m_shells.popups, &alive, nullptr);
        const auto globals = m_link.globals();
        for (const auto &global : globals)
            if (global.interface == wl_output_interface.name)
                cover(m_link.bind<wl_output>(global, wl_output_interface, 1), manager);
    }

    /// None when a panel has come, gone or grown meanwhile.
    [[nodiscard]] std::optional<std::map<QString, QRect>> answer() {
        const auto isAnswered = [this] {
            return std::ranges::all_of(m_outputs, [](const auto &output) { return output->isTold(); });
        };
        for (auto left = timeLeft(); left.count() > 0 && !isAnswered(); left = timeLeft())
            if (!m_link.dispatch(left))
                break;
        std::map<QString, QRect> parts;
        for (const auto &output : m_outputs) {
            if (!output->isSteady())
                return std::nullopt;
            if (output->isTold() && !output->freePart().isEmpty())
                parts[output->name] = output->freePart();
        }
        return parts;
    }

private:
    void cover(wl_output *output, zxdg_output_manager_v1 *manager) {
        static constexpr zxdg_output_v1_listener listener{
            .logical_position = [](void *, zxdg_output_v1 *, std::int32_t, std::int32_t) {},
            .logical_size = [](void *, zxdg_output_v1 *, std::int32_t, std::int32_t) {},
            .done = [](void *, zxdg_output_v1 *) {},
            .name = [](void *self, zxdg_output_v1 *,
                       const char *name) { *static_cast<QString *>(self) = QString::fromUtf8(name); },
            .description = [](void *, zxdg_output_v1 *, const char *) {},
        };
        if (!output)
            return;
        Covered &covered = *m_outputs.emplace_back(std::make_unique<Covered>());
        zxdg_output_v1_add_listener(zxdg_output_manager_v1_get_xdg_output(manager, output), &listener, &covered.name);
        covered.all = std::make_unique<Cover>(m_shells, output, whole);
        covered.rest = std::make_unique<Cover>(m_shells, output, free);
    }

    [[nodiscard]] WaylandLink::Wait timeLeft() const {
        return std::max(WaylandLink::Wait{0}, std::chrono::ceil<WaylandLink::Wait>(m_end - Clock::now()));
    }

    Shells m_shells;
    std::vector<std::unique_ptr<Covered>> m_outputs;
    const Clock::time_point m_end;
    WaylandLink m_link;
};

} // namespace

std::map<QString, QRect> askForFreeParts(std::chrono::milliseconds patience) {
    const auto end = Clock::now() + patience;
    while (Clock::now() < end)
        if (const auto parts = Question(end).answer())
            return *parts;
    return {};
}

} // namespace tavrine
