#include "adapters/wayland/screen/WaylandOutputs.h"

#include <algorithm>
#include <cmath>

#include <wayland/xdg-output-unstable-v1.h>

namespace tavrine {
namespace {

constexpr std::uint32_t outputVersion = 4; // the name is new in it
constexpr std::uint32_t placesVersion = 3;
constexpr double sameScale = 0.001;

bool operator==(const WaylandOutput &a, const WaylandOutput &b) {
    return a.global == b.global && a.transform == b.transform && a.mode == b.mode && a.logical == b.logical;
}

} // namespace

double WaylandOutput::scale() const {
    // Compositors have scales in steps of 1/120, and points in whole numbers.
    constexpr double steps = 120;
    return logical.isEmpty() ? 1 : std::round(steps * pixels().width() / logical.width()) / steps;
}

struct WaylandOutputs::Known {
    WaylandOutput output;
    zxdg_output_v1 *place = nullptr;
    bool hasPlace = false;
    int wholeScale = 1;
    QPoint corner; ///< for compositors that do not tell the place otherwise

    ~Known() {
        if (place)
            zxdg_output_v1_destroy(place);
        if (wl_output_get_version(output.proxy) >= WL_OUTPUT_RELEASE_SINCE_VERSION)
            wl_output_release(output.proxy);
        else
            wl_output_destroy(output.proxy);
    }
    [[nodiscard]] WaylandOutput described() const {
        WaylandOutput told = output;
        if (!hasPlace)
            told.logical = QRect(corner, told.pixels() / std::max(wholeScale, 1));
        return told;
    }
};

namespace {

template <class Known>
const wl_output_listener &outputListener() {
    static constexpr wl_output_listener listener{
        .geometry =
            [](void *self, wl_output *, int x, int y, int, int, int, const char *, const char *, int transform) {
                static_cast<Known *>(self)->corner = {x, y};
                static_cast<Known *>(self)->output.transform = transform;
            },
        .mode =
            [](void *self, wl_output *, std::uint32_t flags, int width, int height, int) {
                if (flags & WL_OUTPUT_MODE_CURRENT)
                    static_cast<Known *>(self)->output.mode = {width, height};
            },
        .done = [](void *, wl_output *) {},
        .scale = [](void *self, wl_output *, int scale) { static_cast<Known *>(self)->wholeScale = scale; },
        .name = [](void *self, wl_output *, const char *name) { static_cast<Known *>(self)->output.name = name; },
        .description = [](void *, wl_output *, const char *) {},
    };
    return listener;
}

template <class Known>
const zxdg_output_v1_listener &placeListener() {
    static constexpr zxdg_output_v1_listener listener{
        .logical_position =
            [](void *self, zxdg_output_v1 *, int x, int y) {
                static_cast<Known *>(self)->output.logical.moveTopLeft({x, y});
            },
        .logical_size =
            [](void *self, zxdg_output_v1 *, int width, int height) {
                static_cast<Known *>(self)->output.logical.setSize({width, height});
                static_cast<Known *>(self)->hasPlace = true;
            },
        .done = [](void *, zxdg_output_v1 *) {},
        .name =
            [](void *self, zxdg_output_v1 *, const char *name) {
                if (auto &known = static_cast<Known *>(self)->output.name; known.empty())
                    known = name;
            },
        .description = [](void *, zxdg_output_v1 *, const char *) {},
    };
    return listener;
}

} // namespace

WaylandOutputs::WaylandOutputs(WaylandLink &link) : m_link(link) {
    m_places = link.bind<zxdg_output_manager_v1>(zxdg_output_manager_v1_interface, placesVersion);
    for (const WaylandLink::Global &global : link.globals())
        if (global.interface == wl_output_interface.name)
            add(global);
    link.setOnGlobal([this](const WaylandLink::Global &global, bool isThere) {
        if (global.interface != wl_output_interface.name)
            return;
        if (isThere)
            add(global);
        else
            std::erase_if(m_known, [&](const auto &known) { return known->output.global == global.name; });
    });
}

WaylandOutputs::~WaylandOutputs() {
    m_link.setOnGlobal(nullptr);
    m_known.clear();
    if (m_places)
        zxdg_output_manager_v1_destroy(m_places);
}

void WaylandOutputs::add(const WaylandLink::Global &global) {
    auto *const proxy = m_link.bind<wl_output>(global, wl_output_interface, outputVersion);
    if (!proxy)
        return;
    auto known = std::make_unique<Known>();
    known->output.global = global.name;
    known->output.proxy = proxy;
    wl_output_add_listener(proxy, &outputListener<Known>(), known.get());
    if (m_places) {
        known->place = zxdg_output_manager_v1_get_xdg_output(m_places, proxy);
        zxdg_output_v1_add_listener(known->place, &placeListener<Known>(), known.get());
    }
    m_known.push_back(std::move(known));
}

std::vector<WaylandOutput> WaylandOutputs::all() const {
    std::vector<WaylandOutput> outputs;
    for (const auto &known : m_known)
        if (const WaylandOutput output = known->described(); !output.mode.isEmpty() && !output.logical.isEmpty())
            outputs.push_back(output);
    return outputs;
}

bool WaylandOutputs::hasChanged() const {
    const auto now = all();
    return !std::equal(now.begin(), now.end(), m_noted.begin(), m_noted.end(),
                       [](const WaylandOutput &a, const WaylandOutput &b) { return a == b; });
}

void WaylandOutputs::note() {
    m_noted = all();
}

bool haveOneScale(const std::vector<WaylandOutput> &outputs) {
    return std::all_of(outputs.begin(), outputs.end(), [&](const WaylandOutput &output) {
        return std::abs(output.scale() - outputs.front().scale()) < sameScale;
    });
}

std::vector<QRect> placesOf(const std::vector<WaylandOutput> &outputs) {
    double scale = 1;
    QRect all;
    for (const WaylandOutput &output : outputs) {
        scale = std::max(scale, output.scale());
        all |= output.logical;
    }
    const bool isOneScale = haveOneScale(outputs);
    std::vector<QRect> places;
    for (const WaylandOutput &output : outputs) {
        const QPoint from = output.logical.topLeft() - all.topLeft();
        QPoint corner(static_cast<int>(std::ceil(from.x() * scale)), static_cast<int>(std::ceil(from.y() * scale)));
        // Points are rounded: the pixels of a neighbour say better where it ends.
        for (size_t other = 0; other < places.size() && isOneScale; ++other) {
            const QRect &beside = outputs[other].logical;
            if (beside.x() + beside.width() == output.logical.x())
                corner.setX(places[other].right() + 1);
            if (beside.y() + beside.height() == output.logical.y())
                corner.setY(places[other].bottom() + 1);
        }
        places.emplace_back(corner, output.pixels());
    }
    return places;
}

} // namespace tavrine
