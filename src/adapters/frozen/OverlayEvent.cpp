#include "adapters/frozen/OverlayEvent.h"

namespace tavrine {
namespace {

struct Meaning {
    quint32 symbol;
    OverlayKey key;
};
constexpr Meaning meanings[] = {
    {0xff1b, OverlayKey::escape}, {0x0020, OverlayKey::space}, {0xff0d, OverlayKey::enter}, {0xff8d, OverlayKey::enter},
    {0xff51, OverlayKey::left},   {0xff53, OverlayKey::right}, {0xff52, OverlayKey::up},    {0xff54, OverlayKey::down},
    {0xff96, OverlayKey::left},   {0xff98, OverlayKey::right}, {0xff97, OverlayKey::up},    {0xff99, OverlayKey::down},
};

} // namespace

OverlayKey overlayKeyOf(quint32 symbol) {
    for (const Meaning &meaning : meanings)
        if (meaning.symbol == symbol)
            return meaning.key;
    return OverlayKey::other;
}

} // namespace tavrine
