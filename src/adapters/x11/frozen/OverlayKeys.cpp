#include "adapters/x11/frozen/OverlayKeys.h"

namespace tavrine {

xcb_get_keyboard_mapping_cookie_t OverlayKeys::ask(XcbLink &link) {
    const auto &setup = *xcb_get_setup(link.connection());
    return xcb_get_keyboard_mapping(link.connection(), setup.min_keycode,
                                    static_cast<quint8>(setup.max_keycode - setup.min_keycode + 1));
}

OverlayKeys OverlayKeys::read(XcbLink &link, xcb_get_keyboard_mapping_cookie_t cookie) {
    OverlayKeys keys;
    const auto answer = link.reply<xcb_get_keyboard_mapping_reply_t>(cookie);
    const size_t perKey = answer ? answer->keysyms_per_keycode : 0;
    if (perKey == 0)
        return keys;
    const xcb_keysym_t *const symbols = xcb_get_keyboard_mapping_keysyms(answer.get());
    const size_t count = static_cast<size_t>(xcb_get_keyboard_mapping_keysyms_length(answer.get()));
    const size_t first = xcb_get_setup(link.connection())->min_keycode;
    for (size_t i = 0; i + perKey <= count && first + i / perKey < keys.m_keys.size(); i += perKey)
        keys.m_keys[first + i / perKey] = overlayKeyOf(symbols[i]); // without Shift, in whatever layout
    return keys;
}

} // namespace tavrine
