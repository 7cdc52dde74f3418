#pragma once

#include "adapters/x11/XcbLink.h"

#include <map>

namespace tavrine {

/// The buttons that are down on each pointer of the server, by its device; the wheel's are none. Device 0 is what
/// programs without XInput see, where a finger on a touch screen counts as the first button. Needs a connection that
/// has announced XInput 2.2.
using PressedPointers = std::map<std::uint16_t, std::uint32_t>;
[[nodiscard]] PressedPointers pressedPointers(XcbLink &link);

/// The server's pointers whose buttons all programs share, not those of single devices.
[[nodiscard]] std::vector<std::uint16_t> masterPointers(XcbLink &link);

/// Whether one of `before` has been let go of.
[[nodiscard]] bool isAnyReleased(const PressedPointers &before, const PressedPointers &now);

} // namespace tavrine
