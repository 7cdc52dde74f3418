#pragma once

#include "adapters/wayland/WaylandLink.h"

#include <QRect>

#include <functional>
#include <memory>
#include <vector>

struct zxdg_output_manager_v1;
struct zxdg_output_v1;

namespace tavrine {

/// A monitor as the compositor describes it.
struct WaylandOutput {
    std::uint32_t global = 0; ///< its name in the registry
    wl_output *proxy = nullptr;
    std::string name;  ///< "DP-1"
    int transform = 0; ///< a `wl_output_transform`: how its pixels lie in the memory that is copied
    QSize mode;        ///< pixels, not turned
    QRect logical;     ///< its place and size among the others, in points

    /// Turned as a person sees it.
    [[nodiscard]] QSize pixels() const { return transform % 2 ? mode.transposed() : mode; }
    [[nodiscard]] double scale() const;
};

/// The outputs of a compositor, followed while this lives. One thread, the link's; goes before the link.
class WaylandOutputs {
public:
    /// Asks for all of them; they are there after `WaylandLink::finish`.
    explicit WaylandOutputs(WaylandLink &link);
    ~WaylandOutputs();
    WaylandOutputs(const WaylandOutputs &) = delete;
    WaylandOutputs &operator=(const WaylandOutputs &) = delete;

    /// Those with pixels and a place, in the order in which they came.
    [[nodiscard]] std::vector<WaylandOutput> all() const;
    /// True once one came, went or changed since `all` was last told to be `noted`.
    [[nodiscard]] bool hasChanged() const;
    void note();

private:
    struct Known;

    void add(const WaylandLink::Global &global);

    WaylandLink &m_link;
    zxdg_output_manager_v1 *m_places = nullptr;
    std::vector<std::unique_ptr<Known>> m_known;
    std::vector<WaylandOutput> m_noted;
};

/// Where each output lies among all pixels: all together they begin at 0, 0 and none covers another unless it does so
/// on the desktop too. With one scale for all, what is beside another on the desktop is so here; with several there may
/// be gaps.
[[nodiscard]] std::vector<QRect> placesOf(const std::vector<WaylandOutput> &outputs);

/// True when things are equally large on all of them.
[[nodiscard]] bool haveOneScale(const std::vector<WaylandOutput> &outputs);

} // namespace tavrine
