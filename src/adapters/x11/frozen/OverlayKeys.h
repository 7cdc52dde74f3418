#pragma once

#include "adapters/frozen/OverlayEvent.h"
#include "adapters/x11/XcbLink.h"

#include <array>

namespace tavrine {

/// Which key of the keyboard is which. A value, read once from the server.
class OverlayKeys {
public:
    /// Asks the server; `read` takes the answer. Without one every key is `other`.
    [[nodiscard]] static xcb_get_keyboard_mapping_cookie_t ask(XcbLink &link);
    [[nodiscard]] static OverlayKeys read(XcbLink &link, xcb_get_keyboard_mapping_cookie_t cookie);

    [[nodiscard]] OverlayKey key(quint8 keycode) const { return m_keys[keycode]; }

private:
    std::array<OverlayKey, 256> m_keys{};
};

} // namespace tavrine
