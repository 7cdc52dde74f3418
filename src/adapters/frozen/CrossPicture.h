#pragma once

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

} // namespace tavrine
