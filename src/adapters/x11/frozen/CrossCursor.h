#pragma once

#include "adapters/x11/XcbLink.h"

namespace tavrine {

/// The cross as a cursor of the server; its own plain one where the server has no colour cursors. The server keeps it
/// until the connection is closed.
[[nodiscard]] xcb_cursor_t crossCursor(XcbLink &link, double scale);

} // namespace tavrine
