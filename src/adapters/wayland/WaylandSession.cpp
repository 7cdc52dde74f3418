#include "adapters/wayland/WaylandSession.h"

#include "adapters/wayland/WaylandLink.h"

#include <cstdlib>

namespace tavrine {

WaylandSession waylandSession() {
    // Without a name the default one would be tried: a compositor that the person has not started this program in.
    const char *const name = std::getenv("WAYLAND_DISPLAY");
    if (!name || !*name)
        return WaylandSession::none;
    const WaylandLink link;
    if (!link.isOpen())
        return WaylandSession::none;
    const bool hasPanels = link.find("zwlr_layer_shell_v1") != nullptr;
    const bool hasPasteboard =
        link.find("zwlr_data_control_manager_v1") != nullptr || link.find("ext_data_control_manager_v1") != nullptr;
    return hasPanels && hasPasteboard ? WaylandSession::native : WaylandSession::managed;
}

} // namespace tavrine
