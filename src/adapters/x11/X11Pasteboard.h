#pragma once

#include "adapters/pasteboard/ReaderPasteboard.h"

namespace tavrine {

/// The CLIPBOARD selection of the X server in $DISPLAY.
///
/// The start waits 0.5 s at most for a server that another program holds; then what stands when it is free is no
/// change. The destructor waits up to 1 s for a clipboard manager, if there is one, to take over what is ours.
class X11Pasteboard final : public ReaderPasteboard {
public:
    explicit X11Pasteboard(const SelectionLimits &limits = {});
};

} // namespace tavrine
