#include "adapters/frozen/CrossPicture.h"

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr int armLength = 11; // at scale 1, from the middle
constexpr int openMiddle = 3;
constexpr quint32 light = 0xffffffff;
constexpr quint32 darkEdge = 0xa0000000;

} // namespace

CrossPicture CrossPicture::make(double scale) {
    const int whole = std::max(1, static_cast<int>(std::lround(scale)));
    const int arm = static_cast<int>(std::lround(armLength * scale));
    const int open = static_cast<int>(std::lround(openMiddle * scale));
    const int half = (whole - 1) / 2; // the line's width is odd, so that it has a middle
    CrossPicture picture;
    picture.side = 2 * (arm + 1) + 1;
    const int middle = arm + 1;
    const auto distanceFromArm = [&](int x, int y) { // 0 on a line, 1 on its edge
        const int along = std::max(std::abs(x), std::abs(y));
        const int across = std::min(std::abs(x), std::abs(y));
        return std::max({across - half, open - along, along - arm, 0});
    };
    for (int y = -middle; y <= middle; ++y)
        for (int x = -middle; x <= middle; ++x) {
            const int distance = distanceFromArm(x, y);
            picture.pixels.push_back(distance == 0 ? light : distance == 1 ? darkEdge : 0);
        }
    return picture;
}

} // namespace tavrine
