#pragma once

#include "adapters/wayland/ClickCatchers.h"
#include "adapters/wayland/LayerPopups.h"
#include "adapters/wayland/LayerShell.h"
#include "adapters/wayland/LayerStack.h"

namespace tavrine {

/// What all windows of this program that float share. Lives on the main thread; outlives them.
struct LayerParts {
    LayerShell shell;
    LayerStack stack;
    LayerPopups popups{shell, stack};
    ClickCatchers catchers{shell, stack};
};

} // namespace tavrine
