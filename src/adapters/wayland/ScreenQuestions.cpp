#include "adapters/wayland/ScreenQuestions.h"

#include "adapters/wayland/ClearBuffer.h"
#include "adapters/wayland/WaylandLink.h"

#include <QPoint>

#include <algorithm>
#include <memory>
#include <vector>

#include <unistd.h>
#include <wayland/viewporter.h>
#include <wayland/wlr-layer-shell-unstable-v1.h>
#include <wayland/xdg-output-unstable-v1.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto longest = 100ms;
constexpr auto longestForModifiers = 1000ms; ///< asked once a drag: a wrong answer copies what was to be moved
constexpr std::uint32_t everyEdge = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                    ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
constexpr std::uint32_t oneEdge = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP;

/// Every keymap has the eight modifiers of X at the same places.
Qt::KeyboardModifiers modifiersOf(std::uint32_t mask) {
    constexpr std::pair<std::uint32_t, Qt::KeyboardModifier> known[] = {{1U << 0, Qt::ShiftModifier},
                                                                        {1U << 2, Qt::ControlModifier},
                                                                        {1U << 3, Qt::AltModifier},
                                                                        {1U << 6, Qt::MetaModifier}};
    Qt::KeyboardModifiers found;
    for (const auto &[bit, modifier] : known)
        found.setFlag(modifier, mask & bit);
    return found;
}

/// All that is made goes with the connection, and the compositor takes its side with it.
class Question {
public:
    enum class Keyboard { left, taken };
    struct Output {
        wl_output *output = nullptr;
        QPoint place;
        QString name;
    };
    /// A surface that covers an output, or a point of the one that the compositor chooses.
    struct Surface {
        Question *question = nullptr;
        const Output *output = nullptr;
        wl_surface *surface = nullptr;
        int width = 1;
        int height = 1;
    };

    explicit Question(std::chrono::milliseconds patience = longest) : m_end(Clock::now() + patience), m_link(patience) {
        m_compositor = m_link.bind<wl_compositor>(wl_compositor_interface, 4);
        m_shell = m_link.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, 3);
        m_viewporter = m_link.bind<wp_viewporter>(wp_viewporter_interface, 1);
        auto *manager = m_link.bind<zxdg_output_manager_v1>(zxdg_output_manager_v1_interface, 3);
        if (!m_compositor || !m_shell || !m_viewporter || !manager)
            return;
        m_buffer = std::make_unique<ClearBuffer>(m_link);
        const auto globals = m_link.globals();
        for (const auto &global : globals)
            if (global.interface == wl_output_interface.name)
                add(global, manager);
        m_isReady = m_buffer->get() != nullptr && m_link.finish(timeLeft());
    }

    [[nodiscard]] std::optional<QPointF> pointer() {
        auto *seat = seatWith(WL_SEAT_CAPABILITY_POINTER);
        if (!seat)
            return std::nullopt;
        wl_pointer_add_listener(wl_seat_get_pointer(seat), &pointerListener(), this);
        for (const auto &output : m_outputs)
            show(output.get());
        waitFor([this] { return m_place.has_value(); });
        return m_place;
    }

    [[nodiscard]] Qt::KeyboardModifiers modifiers() {
        auto *seat = seatWith(WL_SEAT_CAPABILITY_KEYBOARD);
        if (!seat)
            return {};
        wl_keyboard_add_listener(wl_seat_get_keyboard(seat), &keyboardListener(), this);
        show(nullptr, Keyboard::taken);
        waitFor([this] { return m_modifiers.has_value(); });
        return m_modifiers.value_or(Qt::NoModifier);
    }

    [[nodiscard]] QString output() {
        if (!m_isReady)
            return {};
        show(nullptr);
        waitFor([this] { return m_entered != nullptr; });
        const auto found = std::find_if(m_outputs.begin(), m_outputs.end(),
                                        [this](const auto &output) { return output->output == m_entered; });
        return found == m_outputs.end() ? QString() : (*found)->name;
    }

private:
    void add(const WaylandLink::Global &global, zxdg_output_manager_v1 *manager) {
        static constexpr zxdg_output_v1_listener listener{
            .logical_position =
                [](void *self, zxdg_output_v1 *, std::int32_t x, std::int32_t y) {
                    static_cast<Output *>(self)->place = {x, y};
                },
            .logical_size = [](void *, zxdg_output_v1 *, std::int32_t, std::int32_t) {},
            .done = [](void *, zxdg_output_v1 *) {},
            .name = [](void *self, zxdg_output_v1 *,
                       const char *name) { static_cast<Output *>(self)->name = QString::fromUtf8(name); },
            .description = [](void *, zxdg_output_v1 *, const char *) {},
        };
        auto &output = *m_outputs.emplace_back(std::make_unique<Output>());
        output.output = m_link.bind<wl_output>(global, wl_output_interface, 1);
        if (output.output)
            zxdg_output_v1_add_listener(zxdg_output_manager_v1_get_xdg_output(manager, output.output), &listener,
                                        &output);
    }

    /// The seat, if it has that.
    [[nodiscard]] wl_seat *seatWith(std::uint32_t capability) {
        auto *seat = m_isReady ? m_link.bind<wl_seat>(wl_seat_interface, 1) : nullptr;
        if (!seat)
            return nullptr;
        static constexpr wl_seat_listener listener{.capabilities =
                                                       [](void *self, wl_seat *, std::uint32_t capabilities) {
                                                           static_cast<Question *>(self)->m_capabilities = capabilities;
                                                       },
                                                   .name = [](void *, wl_seat *, const char *) {}};
        wl_seat_add_listener(seat, &listener, this);
        return m_link.finish(timeLeft()) && (m_capabilities & capability) ? seat : nullptr;
    }

    void show(const Output *output, Keyboard keyboard = Keyboard::left) {
        static constexpr zwlr_layer_surface_v1_listener listener{
            .configure =
                [](void *data, zwlr_layer_surface_v1 *role, std::uint32_t serial, std::uint32_t width,
                   std::uint32_t height) {
                    auto *surface = static_cast<Surface *>(data);
                    zwlr_layer_surface_v1_ack_configure(role, serial);
                    surface->question->paint(*surface, std::max(1, static_cast<int>(width)),
                                             std::max(1, static_cast<int>(height)));
                },
            .closed = [](void *, zwlr_layer_surface_v1 *) {},
        };
        static constexpr wl_surface_listener surfaceListener{
            .enter = [](void *data, wl_surface *,
                        wl_output *entered) { static_cast<Surface *>(data)->question->m_entered = entered; },
            .leave = [](void *, wl_surface *, wl_output *) {},
        };
        auto &shown = *m_surfaces.emplace_back(std::make_unique<Surface>());
        shown.question = this;
        shown.output = output;
        shown.surface = wl_compositor_create_surface(m_compositor);
        wl_surface_add_listener(shown.surface, &surfaceListener, &shown);
        auto *role = zwlr_layer_shell_v1_get_layer_surface(m_shell, shown.surface, output ? output->output : nullptr,
                                                           ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "tavrine-question");
        zwlr_layer_surface_v1_add_listener(role, &listener, &shown);
        zwlr_layer_surface_v1_set_exclusive_zone(role, -1);
        zwlr_layer_surface_v1_set_anchor(role, output ? everyEdge : oneEdge);
        zwlr_layer_surface_v1_set_size(role, output ? 0 : 1, output ? 0 : 1);
        zwlr_layer_surface_v1_set_keyboard_interactivity(role, keyboard == Keyboard::taken ? 1 : 0);
        if (!output) {
            wl_region *nowhere = wl_compositor_create_region(m_compositor);
            wl_surface_set_input_region(shown.surface, nowhere);
            wl_region_destroy(nowhere);
        }
        wl_surface_commit(shown.surface);
    }

    void paint(const Surface &surface, int width, int height) {
        wp_viewport *viewport = wp_viewporter_get_viewport(m_viewporter, surface.surface);
        wp_viewport_set_destination(viewport, width, height);
        wl_surface_attach(surface.surface, m_buffer->get(), 0, 0);
        wl_surface_damage(surface.surface, 0, 0, width, height);
        wl_surface_commit(surface.surface);
        wp_viewport_destroy(viewport); // with the next commit, which does not come
    }

    template <class Condition>
    void waitFor(Condition condition) {
        for (auto left = timeLeft(); left.count() > 0 && !condition(); left = timeLeft())
            if (!m_link.dispatch(left))
                return;
    }

    /// Of the patience, which is one for all that is asked.
    [[nodiscard]] WaylandLink::Wait timeLeft() const {
        return std::max(WaylandLink::Wait{0}, std::chrono::ceil<WaylandLink::Wait>(m_end - Clock::now()));
    }

    static const wl_pointer_listener &pointerListener() {
        static constexpr wl_pointer_listener listener{
            .enter =
                [](void *self, wl_pointer *, std::uint32_t, wl_surface *surface, wl_fixed_t x, wl_fixed_t y) {
                    auto *question = static_cast<Question *>(self);
                    for (const auto &each : question->m_surfaces)
                        if (each->surface == surface && each->output)
                            question->m_place =
                                QPointF(each->output->place) + QPointF(wl_fixed_to_double(x), wl_fixed_to_double(y));
                },
            .leave = [](void *, wl_pointer *, std::uint32_t, wl_surface *) {},
            .motion = [](void *, wl_pointer *, std::uint32_t, wl_fixed_t, wl_fixed_t) {},
            .button = [](void *, wl_pointer *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
            .axis = [](void *, wl_pointer *, std::uint32_t, std::uint32_t, wl_fixed_t) {},
            .frame = nullptr, // of later versions from here
            .axis_source = nullptr,
            .axis_stop = nullptr,
            .axis_discrete = nullptr,
            .axis_value120 = nullptr,
        };
        return listener;
    }

    static const wl_keyboard_listener &keyboardListener() {
        static constexpr wl_keyboard_listener listener{
            .keymap = [](void *, wl_keyboard *, std::uint32_t, std::int32_t file, std::uint32_t) { ::close(file); },
            .enter = [](void *self, wl_keyboard *, std::uint32_t, wl_surface *,
                        wl_array *) { static_cast<Question *>(self)->m_hasKeyboard = true; },
            .leave = [](void *, wl_keyboard *, std::uint32_t, wl_surface *) {},
            .key = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
            .modifiers =
                [](void *self, wl_keyboard *, std::uint32_t, std::uint32_t depressed, std::uint32_t latched,
                   std::uint32_t, std::uint32_t) {
                    if (static_cast<Question *>(self)->m_hasKeyboard)
                        static_cast<Question *>(self)->m_modifiers = modifiersOf(depressed | latched);
                },
            .repeat_info = [](void *, wl_keyboard *, std::int32_t, std::int32_t) {},
        };
        return listener;
    }

    std::vector<std::unique_ptr<Output>> m_outputs;
    std::vector<std::unique_ptr<Surface>> m_surfaces;
    std::optional<QPointF> m_place;
    wl_output *m_entered = nullptr;
    std::optional<Qt::KeyboardModifiers> m_modifiers;
    std::uint32_t m_capabilities = 0;
    bool m_hasKeyboard = false;
    bool m_isReady = false;
    wl_compositor *m_compositor = nullptr;
    zwlr_layer_shell_v1 *m_shell = nullptr;
    wp_viewporter *m_viewporter = nullptr;
    const Clock::time_point m_end;
    WaylandLink m_link;
    std::unique_ptr<ClearBuffer> m_buffer;
};

} // namespace

std::optional<QPointF> askForPointer(std::chrono::milliseconds patience) {
    return Question(patience).pointer();
}

QString askForOutput() {
    return Question().output();
}

Qt::KeyboardModifiers askForModifiers() {
    return Question(longestForModifiers).modifiers();
}

} // namespace tavrine
