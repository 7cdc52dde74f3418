#pragma once

#include "adapters/pasteboard/ReaderPasteboard.h"

#include <functional>
#include <string>

namespace tavrine {

class DataControlThread;

/// The clipboard of the compositor in $WAYLAND_DISPLAY, by data control.
///
/// The start waits 0.5 s at most for a compositor that hangs; then what stands when it answers is no change. The
/// compositor does not tell that a program empties the clipboard from its end: `tellsEmptying` is false.
class WaylandPasteboard final : public ReaderPasteboard {
public:
    /// `onLost` is called on another thread once the compositor has ended the connection, with the reason.
    explicit WaylandPasteboard(std::function<void(const std::string &reason)> onLost,
                               const SelectionLimits &limits = {});

    [[nodiscard]] bool tellsEmptying() const override { return false; }
};

} // namespace tavrine
