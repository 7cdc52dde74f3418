#include "adapters/desktops/MakeDesktop.h"

#include "adapters/desktops/X11Desktop.h"

namespace tavrine {

std::unique_ptr<Desktop> makeDesktop() {
    return std::make_unique<X11Desktop>();
}

} // namespace tavrine
