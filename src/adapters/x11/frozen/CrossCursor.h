#pragma once

#include "adapters/x11/XcbLink.h"

#include <QtGlobal>

#include <vector>

namespace tavrine {

/// A thin cross with an open middle, light with a dark edge, so that it shows on every picture and covers no pixel that
/// is aimed at. `pixels` are premultiplied, alpha in the highest bits.
struct CrossPicture {
    int side = 0; ///< odd; the hot spot is in the middle
    std::vector<quint32> pixels;

    [[nodiscard]] static CrossPicture make(double scale);
};

/// The cross as a cursor of the server; its own plain one where the server has no colour cursors. The server keeps it
/// until the connection is closed.
[[nodiscard]] xcb_cursor_t crossCursor(XcbLink &link, double scale);

} // namespace tavrine
