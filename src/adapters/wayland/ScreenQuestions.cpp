#include "adapters/wayland/ScreenQuestions.h"

#include "adapters/wayland/ClearBuffer.h"
#include "adapters/wayland/WaylandLink.h"

#include <QPoint>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
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

/// The compositor's side goes as well, where it can be told.
template <class Proxy>
void release(Proxy *proxy, void (*release)(Proxy *), void (*destroy)(Proxy *), std::uint32_t since) {
    (wl_proxy_get_version(reinterpret_cast<wl_proxy *>(proxy)) >= since ? release : destroy)(proxy);
}

} // namespace

/// A connection's link with all that is made of it once.
struct ScreenQuestions::Tools {
    Tools(std::shared_ptr<WaylandConnection> connection, WaylandLink::Wait patience)
        : link(std::move(connection), patience), buffer(link),
          compositor(link.bind<wl_compositor>(wl_compositor_interface, 4)),
          shell(link.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, 3)),
          viewporter(link.bind<wp_viewporter>(wp_viewporter_interface, 1)),
          manager(link.bind<zxdg_output_manager_v1>(zxdg_output_manager_v1_interface, 3)),
          seat(link.bind<wl_seat>(wl_seat_interface, 5)) {
        static constexpr wl_seat_listener listener{
            .capabilities = [](void *self, wl_seat *,
                               std::uint32_t told) { static_cast<Tools *>(self)->capabilities = told; },
            .name = [](void *, wl_seat *, const char *) {}};
        if (seat)
            wl_seat_add_listener(seat, &listener, this);
    }
    ~Tools() {
        if (seat)
            release(seat, wl_seat_release, wl_seat_destroy, WL_SEAT_RELEASE_SINCE_VERSION);
        if (manager)
            zxdg_output_manager_v1_destroy(manager);
        if (viewporter)
            wp_viewporter_destroy(viewporter);
        if (shell)
            zwlr_layer_shell_v1_destroy(shell);
        if (compositor)
            wl_compositor_destroy(compositor);
    }
    Tools(const Tools &) = delete;
    Tools &operator=(const Tools &) = delete;

    [[nodiscard]] bool areAllThere() const { return compositor && shell && viewporter && manager && buffer.get(); }

    WaylandLink link;
    ClearBuffer buffer;
    wl_compositor *compositor;
    zwlr_layer_shell_v1 *shell;
    wp_viewporter *viewporter;
    zxdg_output_manager_v1 *manager;
    wl_seat *seat;
    std::uint32_t capabilities = 0;
};

/// One of them, with what is made for it alone.
class ScreenQuestions::Question {
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

    Question(ScreenQuestions &asker, std::chrono::milliseconds patience)
        : m_end(Clock::now() + patience), m_tools(asker.tools(patience)), m_link(m_tools.link) {
        if (!m_tools.areAllThere())
            return;
        const auto globals = m_link.globals();
        for (const auto &global : globals)
            if (global.interface == wl_output_interface.name)
                add(global);
        m_isReady = m_link.finish(timeLeft());
    }
    ~Question() {
        for (auto end = m_ends.rbegin(); end != m_ends.rend(); ++end)
            (*end)();
        m_link.flush();
    }
    Question(const Question &) = delete;
    Question &operator=(const Question &) = delete;

    [[nodiscard]] std::optional<QPointF> pointer() {
        if (!hasSeatWith(WL_SEAT_CAPABILITY_POINTER))
            return std::nullopt;
        wl_pointer *pointer = wl_seat_get_pointer(m_tools.seat);
        m_ends.push_back(
            [pointer] { release(pointer, wl_pointer_release, wl_pointer_destroy, WL_POINTER_RELEASE_SINCE_VERSION); });
        wl_pointer_add_listener(pointer, &pointerListener(), this);
        for (const auto &output : m_outputs)
            show(output.get());
        waitFor([this] { return m_place.has_value(); });
        return m_place;
    }

    [[nodiscard]] Qt::KeyboardModifiers modifiers() {
        if (!hasSeatWith(WL_SEAT_CAPABILITY_KEYBOARD))
            return {};
        wl_keyboard *keyboard = wl_seat_get_keyboard(m_tools.seat);
        m_ends.push_back([keyboard] {
            release(keyboard, wl_keyboard_release, wl_keyboard_destroy, WL_KEYBOARD_RELEASE_SINCE_VERSION);
        });
        wl_keyboard_add_listener(keyboard, &keyboardListener(), this);
        show(nullptr, Keyboard::taken);
        waitFor([this] { return m_modifiers.has_value(); });
        return m_modifiers.value_or(Qt::NoModifier);
    }

    [[nodiscard]] QString output() {
        if (!m_isReady)
            return {};
        show(nullptr);
        waitFor([this] { return m_entered != nullptr; });
        return m_entered ? m_entered->name : QString();
    }

private:
    /// To be destroyed with the question, in the opposite order.
    template <class Proxy>
    Proxy *own(Proxy *proxy, void (*destroy)(Proxy *)) {
        if (proxy)
            m_ends.push_back([proxy, destroy] { destroy(proxy); });
        return proxy;
    }

    void add(const WaylandLink::Global &global) {
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
        output.output = m_link.bind<wl_output>(global, wl_output_interface, 3);
        if (!output.output)
            return;
        m_ends.push_back([output = output.output] {
            release(output, wl_output_release, wl_output_destroy, WL_OUTPUT_RELEASE_SINCE_VERSION);
        });
        auto *description =
            own(zxdg_output_manager_v1_get_xdg_output(m_tools.manager, output.output), zxdg_output_v1_destroy);
        zxdg_output_v1_add_listener(description, &listener, &output);
    }

    [[nodiscard]] bool hasSeatWith(std::uint32_t capability) const {
        return m_isReady && m_tools.seat && (m_tools.capabilities & capability);
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
                        wl_output *entered) { static_cast<Surface *>(data)->question->enter(entered); },
            .leave = [](void *, wl_surface *, wl_output *) {},
        };
        auto &shown = *m_surfaces.emplace_back(std::make_unique<Surface>());
        shown.question = this;
        shown.output = output;
        shown.surface = own(wl_compositor_create_surface(m_tools.compositor), wl_surface_destroy);
        wl_surface_add_listener(shown.surface, &surfaceListener, &shown);
        auto *role =
            own(zwlr_layer_shell_v1_get_layer_surface(m_tools.shell, shown.surface, output ? output->output : nullptr,
                                                      ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "tavrine-question"),
                zwlr_layer_surface_v1_destroy);
        zwlr_layer_surface_v1_add_listener(role, &listener, &shown);
        zwlr_layer_surface_v1_set_exclusive_zone(role, -1);
        zwlr_layer_surface_v1_set_anchor(role, output ? everyEdge : oneEdge);
        zwlr_layer_surface_v1_set_size(role, output ? 0 : 1, output ? 0 : 1);
        zwlr_layer_surface_v1_set_keyboard_interactivity(role, keyboard == Keyboard::taken ? 1 : 0);
        if (!output) {
            wl_region *nowhere = wl_compositor_create_region(m_tools.compositor);
            wl_surface_set_input_region(shown.surface, nowhere);
            wl_region_destroy(nowhere);
        }
        wl_surface_commit(shown.surface);
    }

    void paint(const Surface &surface, int width, int height) {
        wp_viewport *viewport = wp_viewporter_get_viewport(m_tools.viewporter, surface.surface);
        wp_viewport_set_destination(viewport, width, height);
        wl_surface_attach(surface.surface, m_tools.buffer.get(), 0, 0);
        wl_surface_damage(surface.surface, 0, 0, width, height);
        wl_surface_commit(surface.surface);
        wp_viewport_destroy(viewport); // with the next commit, which does not come
    }

    /// The compositor tells of an output by all that this program has made of it, on the same connection too.
    void enter(const wl_output *entered) {
        for (const auto &output : m_outputs)
            if (output->output == entered)
                m_entered = output.get();
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
            .frame = [](void *, wl_pointer *) {},
            .axis_source = [](void *, wl_pointer *, std::uint32_t) {},
            .axis_stop = [](void *, wl_pointer *, std::uint32_t, std::uint32_t) {},
            .axis_discrete = [](void *, wl_pointer *, std::uint32_t, std::int32_t) {},
            .axis_value120 = nullptr, // of later versions
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
    const Output *m_entered = nullptr;
    std::optional<Qt::KeyboardModifiers> m_modifiers;
    bool m_hasKeyboard = false;
    bool m_isReady = false;
    const Clock::time_point m_end;
    Tools &m_tools;
    WaylandLink &m_link;
    std::vector<std::function<void()>> m_ends;
};

ScreenQuestions::ScreenQuestions(std::shared_ptr<WaylandConnection> connection) : m_connection(std::move(connection)) {}

ScreenQuestions::~ScreenQuestions() = default;

/// As they are now: what came and went since is heard of before the answer.
ScreenQuestions::Tools &ScreenQuestions::tools(std::chrono::milliseconds patience) {
    if (!m_tools || !m_tools->link.isOpen())
        m_tools = std::make_unique<Tools>(m_connection, patience);
    else
        static_cast<void>(m_tools->link.finish(patience));
    return *m_tools;
}

std::optional<QPointF> ScreenQuestions::pointer(std::chrono::milliseconds patience) {
    return Question(*this, patience).pointer();
}

QString ScreenQuestions::output() {
    return Question(*this, longest).output();
}

Qt::KeyboardModifiers ScreenQuestions::modifiers() {
    return Question(*this, longestForModifiers).modifiers();
}

} // namespace tavrine
