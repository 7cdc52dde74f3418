#include "adapters/wayland/OutputTable.h"

#include "adapters/wayland/Bars.h"
#include "adapters/wayland/FreeParts.h"
#include "base/OnMainThread.h"

#include <algorithm>
#include <cstring>

#include <wayland/wlr-layer-shell-unstable-v1.h>
#include <wayland/xdg-output-unstable-v1.h>

namespace tavrine {
namespace {

constexpr std::uint32_t everyEdge = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                    ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;

constexpr std::chrono::seconds longestAnswer{2}; ///< one or two milliseconds are usual; the program's end waits for it

/// A quarter turn, mirrored or not.
bool isTurned(int transform) {
    return transform == WL_OUTPUT_TRANSFORM_90 || transform == WL_OUTPUT_TRANSFORM_270 ||
           transform == WL_OUTPUT_TRANSFORM_FLIPPED_90 || transform == WL_OUTPUT_TRANSFORM_FLIPPED_270;
}

} // namespace

class OutputTable::Output {
public:
    Output(OutputTable &table, const WaylandLink::Global &global) : m_table(table), m_name(global.name) {
        static constexpr wl_output_listener listener{
            .geometry = [](void *self, wl_output *, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                           std::int32_t, const char *, const char *,
                           std::int32_t transform) { static_cast<Output *>(self)->m_transform = transform; },
            .mode =
                [](void *self, wl_output *, std::uint32_t flags, std::int32_t width, std::int32_t height,
                   std::int32_t) {
                    if (flags & WL_OUTPUT_MODE_CURRENT)
                        static_cast<Output *>(self)->m_mode = {width, height};
                },
            .done = [](void *self, wl_output *) { static_cast<Output *>(self)->publish(); },
            .scale = [](void *, wl_output *, std::int32_t) {},
            .name = [](void *, wl_output *, const char *) {},
            .description = [](void *, wl_output *, const char *) {},
        };
        m_output = table.m_client.link().bind<wl_output>(global, wl_output_interface, 4);
        if (!m_output)
            return; // the connection has ended
        wl_output_add_listener(m_output, &listener, this);
        if (table.m_manager)
            describe();
        if (table.m_layerShell && table.m_compositor)
            measure();
    }
    ~Output() {
        if (m_role)
            zwlr_layer_surface_v1_destroy(m_role);
        if (m_surface)
            wl_surface_destroy(m_surface);
        if (m_description)
            zxdg_output_v1_destroy(m_description);
        if (!m_output)
            return;
        if (wl_output_get_version(m_output) >= WL_OUTPUT_RELEASE_SINCE_VERSION)
            wl_output_release(m_output);
        else
            wl_output_destroy(m_output);
    }
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    [[nodiscard]] std::uint32_t name() const { return m_name; }
    [[nodiscard]] const OutputFacts &facts() const { return m_published; }
    /// What is free lies there, unless another part is free by now.
    void takePlace(const QRect &part) {
        if (part.size() != m_facts.usable.size())
            return;
        m_facts.usable = part;
        publish();
    }

private:
    void describe() {
        static constexpr zxdg_output_v1_listener listener{
            .logical_position = [](void *self, zxdg_output_v1 *, std::int32_t x,
                                   std::int32_t y) { static_cast<Output *>(self)->m_facts.logical.moveTo(x, y); },
            .logical_size =
                [](void *self, zxdg_output_v1 *, std::int32_t width, std::int32_t height) {
                    static_cast<Output *>(self)->m_facts.logical.setSize({width, height});
                },
            .done = [](void *self, zxdg_output_v1 *) { static_cast<Output *>(self)->publish(); },
            .name = [](void *self, zxdg_output_v1 *,
                       const char *name) { static_cast<Output *>(self)->m_facts.name = QString::fromUtf8(name); },
            .description =
                [](void *self, zxdg_output_v1 *, const char *text) {
                    static_cast<Output *>(self)->m_facts.description = QString::fromUtf8(text);
                },
        };
        m_description = zxdg_output_manager_v1_get_xdg_output(m_table.m_manager, m_output);
        zxdg_output_v1_add_listener(m_description, &listener, this);
    }

    void measure() {
        static constexpr zwlr_layer_surface_v1_listener listener{
            .configure =
                [](void *self, zwlr_layer_surface_v1 *role, std::uint32_t serial, std::uint32_t width,
                   std::uint32_t height) {
                    zwlr_layer_surface_v1_ack_configure(role, serial);
                    static_cast<Output *>(self)->measured({static_cast<int>(width), static_cast<int>(height)});
                },
            .closed = [](void *, zwlr_layer_surface_v1 *) {}, // the output goes
        };
        m_surface = wl_compositor_create_surface(m_table.m_compositor);
        m_role = zwlr_layer_shell_v1_get_layer_surface(m_table.m_layerShell, m_surface, m_output,
                                                       ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND, "tavrine-measure");
        zwlr_layer_surface_v1_add_listener(m_role, &listener, this);
        zwlr_layer_surface_v1_set_anchor(m_role, everyEdge);
        zwlr_layer_surface_v1_set_size(m_role, 0, 0);
        wl_surface_commit(m_surface);
    }

    void measured(QSize size) {
        if (size == m_facts.usable.size())
            return; // some compositors say so again whenever anything of the kind comes or goes, as what asks does
        const int taken = m_facts.logical.height() - size.height();
        m_facts.usable = QRect({0, taken > 0 && taken <= highestBar ? taken : 0}, size);
        publish();
        if (size != m_facts.logical.size())
            m_table.askForPlaces();
    }

    void publish() {
        m_facts.pixels = isTurned(m_transform) ? m_mode.transposed() : m_mode;
        if (std::exchange(m_published, m_facts) != m_facts)
            m_table.m_onChange();
    }

    OutputTable &m_table;
    const std::uint32_t m_name;
    wl_output *m_output = nullptr;
    zxdg_output_v1 *m_description = nullptr;
    wl_surface *m_surface = nullptr;
    zwlr_layer_surface_v1 *m_role = nullptr;
    int m_transform = WL_OUTPUT_TRANSFORM_NORMAL;
    QSize m_mode;
    OutputFacts m_facts;
    OutputFacts m_published;
};

OutputTable::OutputTable(std::shared_ptr<WaylandReader> reader, std::function<void()> onChange)
    : m_onChange(std::move(onChange)), m_client(std::move(reader)), m_questions(QStringLiteral("com.tavrine.free")),
      m_self(std::make_shared<OutputTable *>(this)) {
    WaylandLink &link = m_client.link();
    m_compositor = link.bind<wl_compositor>(wl_compositor_interface, 4);
    m_layerShell = link.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, 3);
    m_manager = link.bind<zxdg_output_manager_v1>(zxdg_output_manager_v1_interface, 3);
    const auto globals = link.globals();
    for (const auto &global : globals)
        added(global);
    link.setOnGlobal([this](const WaylandLink::Global &global, bool isThere) {
        if (isThere)
            added(global);
        else
            removed(global.name);
    });
    // What is left of an output may be worked out in a turn of the compositor's own.
    if (link.finish())
        link.finish();
}

OutputTable::~OutputTable() {
    m_outputs.clear();
    if (m_manager)
        zxdg_output_manager_v1_destroy(m_manager);
    if (m_layerShell)
        zwlr_layer_shell_v1_destroy(m_layerShell);
    if (m_compositor)
        wl_compositor_destroy(m_compositor);
}

void OutputTable::added(const WaylandLink::Global &global) {
    if (global.interface == wl_output_interface.name)
        m_outputs.push_back(std::make_unique<Output>(*this, global));
}

void OutputTable::removed(std::uint32_t name) {
    if (std::erase_if(m_outputs, [name](const auto &output) { return output->name() == name; }) > 0)
        m_onChange();
}

void OutputTable::askForPlaces() {
    m_asksAgain = m_isAsking;
    if (std::exchange(m_isAsking, true))
        return;
    m_questions.async([self = std::weak_ptr(m_self)] {
        onMainThread([self, parts = askForFreeParts(longestAnswer)] {
            if (const auto table = self.lock())
                (*table)->takePlaces(parts);
        });
    });
}

void OutputTable::takePlaces(const std::map<QString, QRect> &parts) {
    m_isAsking = false;
    for (const auto &output : m_outputs)
        if (const auto part = parts.find(output->facts().name); part != parts.end())
            output->takePlace(part->second);
    if (m_asksAgain)
        askForPlaces();
}

const OutputFacts *OutputTable::find(const QString &name) const {
    const auto found = std::find_if(m_outputs.begin(), m_outputs.end(),
                                    [&](const auto &output) { return output->facts().name == name; });
    return found == m_outputs.end() ? nullptr : &(*found)->facts();
}

} // namespace tavrine
