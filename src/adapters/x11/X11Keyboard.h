#pragma once

#include "adapters/x11/XcbClient.h"

#include <array>
#include <optional>
#include <vector>

namespace tavrine {

/// The keyboard as the X server maps it: which key means what, and which bit each modifier has today.
///
/// A value read from one connection; owned by the adapter that asked, and read anew when the mapping changed.
class X11Keyboard {
public:
    static constexpr xcb_keysym_t altL = 0xffe9;
    static constexpr xcb_keysym_t controlL = 0xffe3;
    static constexpr xcb_keysym_t shiftL = 0xffe1;
    static constexpr xcb_keysym_t insert = 0xff63;

    /// Reads the maps: two round trips. None when the server does not tell them in time.
    [[nodiscard]] static std::optional<X11Keyboard> read(XcbClient &client);

    /// What the key means without Shift in the layout group; the first group's meaning where that has none.
    [[nodiscard]] xcb_keysym_t keysym(int keycode, int group = 0) const;

    /// The key that means `keysym` in the group, else in any; 0 when there is none. Lower keycodes come first.
    [[nodiscard]] int keycode(xcb_keysym_t keysym, int group = 0) const;

    /// The flag of `modifierFlag` for a key that is a modifier in the group, else 0.
    [[nodiscard]] quint32 modifierFlagOf(int keycode, int group) const;

    /// True for keys that switch a lock on and off.
    [[nodiscard]] bool isLockKey(int keycode) const;

    /// Bits of a key event's state: the one for `modifier` of `hotKeyModifier`, 0 where the mapping has none.
    [[nodiscard]] quint16 stateMask(quint32 modifier) const;

    /// Bits that stand for locks: Caps Lock, Num Lock, Scroll Lock, each once.
    [[nodiscard]] std::vector<quint16> lockMasks() const;

    /// Keycodes that are modifiers of any kind.
    [[nodiscard]] const std::vector<quint8> &modifierKeys() const { return m_modifierKeys; }

    bool operator==(const X11Keyboard &) const = default;

private:
    [[nodiscard]] quint16 maskOf(xcb_keysym_t first, xcb_keysym_t second) const;

    int m_firstKeycode = 8;
    int m_symbolsPerKey = 0;
    std::vector<xcb_keysym_t> m_symbols;
    std::array<std::vector<quint8>, 8> m_rows; ///< keys of each modifier bit
    std::vector<quint8> m_modifierKeys;
};

/// The maps of keys that are down: one bit each, as the server tells them. Empty when it did not answer.
[[nodiscard]] std::vector<quint8> keysDown(XcbClient &client);

/// Asks the server to tell of layout groups, locks and mapping changes, and to leave out the releases of keys that
/// repeat. Returns the number of the first XKB event, 0 when the server has no XKB.
[[nodiscard]] quint8 selectKeyboardNotices(XcbClient &client);

/// What a keyboard notice says; all false for another event.
struct KeyboardNotice {
    bool isMapping = false; ///< the maps changed
    bool isState = false;
    int group = 0;
    quint16 modifiers = 0; ///< all that count now, held and locked, as bits of a key event's state
    bool isCapsLocked = false;
};
[[nodiscard]] KeyboardNotice keyboardNotice(const xcb_generic_event_t &event, quint8 firstXkbEvent);

/// The state now, as such a notice. None when the server has no XKB or did not answer.
[[nodiscard]] KeyboardNotice keyboardState(XcbClient &client);

} // namespace tavrine
