#pragma once

#include <wayland/wlr-layer-shell-unstable-v1.h>

namespace tavrine {

/// Lets go what was bound; null for nothing. A compositor is told of it from version 3 on: telling it earlier ends the
/// connection, with all who share it.
inline void letLayerShellGo(zwlr_layer_shell_v1 *shell) {
    if (!shell)
        return;
    if (zwlr_layer_shell_v1_get_version(shell) >= ZWLR_LAYER_SHELL_V1_DESTROY_SINCE_VERSION)
        zwlr_layer_shell_v1_destroy(shell);
    else
        wl_proxy_destroy(reinterpret_cast<wl_proxy *>(shell));
}

} // namespace tavrine
