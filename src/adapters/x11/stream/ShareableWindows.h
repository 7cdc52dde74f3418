#pragma once

#include "adapters/x11/XcbLink.h"
#include "ports/ScreenStream.h"

namespace tavrine {

/// The windows that are on the screen, without those that draw the desktop itself, as their programs number them: not
/// the frames that a window manager puts round them. None when the server did not answer in time.
[[nodiscard]] std::optional<QList<ShareableWindow>> readShareableWindows(XcbLink &link);

} // namespace tavrine
