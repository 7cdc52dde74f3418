#include "adapters/wayland/WaylandSession.h"

#include "base/Print.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace tavrine {

namespace {

constexpr WaylandLink::Wait unusual{1000};

WaylandSession sessionOf(const WaylandLink &link) {
    const bool hasPanels = link.find("zwlr_layer_shell_v1") != nullptr;
    const bool hasPasteboard =
        link.find("zwlr_data_control_manager_v1") != nullptr || link.find("ext_data_control_manager_v1") != nullptr;
    return hasPanels && hasPasteboard ? WaylandSession::native : WaylandSession::managed;
}

} // namespace

WaylandSession waylandSession(std::shared_ptr<WaylandConnection> &connection, WaylandLink::Wait longest) {
    // Without a name the default one would be tried: a compositor that the person has not started this program in.
    const char *const name = std::getenv("WAYLAND_DISPLAY");
    if (!name || !*name)
        return WaylandSession::none;
    const auto made = std::make_shared<WaylandConnection>();
    std::optional<WaylandLink> link(std::in_place, made, std::min(unusual, longest));
    if (!link->isOpen() && made->isOpen()) {
        printLine(QStringLiteral("DEBUG: The Wayland compositor does not answer yet"));
        link.emplace(made, longest);
    }
    if (!link->isOpen()) {
        if (made->isOpen())
            printLine(QStringLiteral("DEBUG: The Wayland compositor does not answer"));
        return WaylandSession::none;
    }
    connection = made;
    return sessionOf(*link);
}

} // namespace tavrine
