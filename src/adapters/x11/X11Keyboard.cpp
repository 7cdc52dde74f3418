#include "adapters/x11/X11Keyboard.h"

#include "adapters/x11/XkbHeader.h"
#include "ports/EventMonitors.h"
#include "ports/HotKeys.h"

#include <algorithm>

namespace tavrine {
namespace {

constexpr xcb_keysym_t shiftR = 0xffe2;
constexpr xcb_keysym_t controlR = 0xffe4;
constexpr xcb_keysym_t capsLock = 0xffe5;
constexpr xcb_keysym_t shiftLock = 0xffe6;
constexpr xcb_keysym_t metaL = 0xffe7;
constexpr xcb_keysym_t metaR = 0xffe8;
constexpr xcb_keysym_t altR = 0xffea;
constexpr xcb_keysym_t superL = 0xffeb;
constexpr xcb_keysym_t superR = 0xffec;
constexpr xcb_keysym_t hyperL = 0xffed;
constexpr xcb_keysym_t hyperR = 0xffee;
constexpr xcb_keysym_t numLock = 0xff7f;
constexpr xcb_keysym_t scrollLock = 0xff14;
constexpr xcb_keysym_t modeSwitch = 0xff7e;
constexpr xcb_keysym_t level3Shift = 0xfe03;
constexpr xcb_keysym_t level5Shift = 0xfe11;

// Both kinds of lock keys there are in the range of the "ISO" symbols latch or lock something.
constexpr bool isLock(xcb_keysym_t symbol) {
    return symbol == capsLock || symbol == shiftLock || symbol == numLock || symbol == scrollLock;
}

} // namespace

std::optional<X11Keyboard> X11Keyboard::read(XcbClient &client) {
    X11Keyboard keyboard;
    const auto *setup = xcb_get_setup(client.connection());
    const auto symbolsCookie = xcb_get_keyboard_mapping(
        client.connection(), setup->min_keycode, static_cast<quint8>(setup->max_keycode - setup->min_keycode + 1));
    const auto rowsCookie = xcb_get_modifier_mapping(client.connection());
    keyboard.m_firstKeycode = setup->min_keycode;
    const auto symbols = client.reply<xcb_get_keyboard_mapping_reply_t>(symbolsCookie);
    const auto rows = client.reply<xcb_get_modifier_mapping_reply_t>(rowsCookie);
    if (!symbols || !rows)
        return std::nullopt;
    const auto *first = xcb_get_keyboard_mapping_keysyms(symbols.get());
    keyboard.m_symbols.assign(first, first + xcb_get_keyboard_mapping_keysyms_length(symbols.get()));
    keyboard.m_symbolsPerKey = symbols->keysyms_per_keycode;
    const auto *keys = xcb_get_modifier_mapping_keycodes(rows.get());
    for (size_t bit = 0; bit < keyboard.m_rows.size(); ++bit)
        for (int i = 0; i < rows->keycodes_per_modifier; ++i)
            if (const quint8 key = *keys++; key != 0) {
                keyboard.m_rows[bit].push_back(key);
                keyboard.m_modifierKeys.push_back(key);
            }
    return keyboard;
}

xcb_keysym_t X11Keyboard::keysym(int keycode, int group) const {
    if (keycode < m_firstKeycode || m_symbolsPerKey <= 0)
        return 0;
    const auto perKey = static_cast<size_t>(m_symbolsPerKey);
    const size_t row = static_cast<size_t>(keycode - m_firstKeycode) * perKey;
    if (row + perKey > m_symbols.size())
        return 0;
    const size_t column = static_cast<size_t>(group) * 2; // the first two groups have the first four places, two each
    const xcb_keysym_t symbol = column < std::min<size_t>(perKey, 4) ? m_symbols[row + column] : 0;
    return symbol ? symbol : m_symbols[row];
}

int X11Keyboard::keycode(xcb_keysym_t symbol, int group) const {
    const int last = m_firstKeycode + (m_symbolsPerKey ? static_cast<int>(m_symbols.size()) / m_symbolsPerKey : 0);
    for (const int wanted : {group, 0, 1})
        for (int key = m_firstKeycode; key < last; ++key)
            if (keysym(key, wanted) == symbol)
                return key;
    return 0;
}

quint32 X11Keyboard::modifierFlagOf(int keycode, int group) const {
    switch (keysym(keycode, group)) {
    case shiftL:
    case shiftR:
        return modifierFlag::shift;
    case controlL:
    case controlR:
        return modifierFlag::control;
    case altL:
    case altR:
        return modifierFlag::option;
    case superL:
    case superR:
        return modifierFlag::command;
    case level3Shift: // AltGr writes characters; it is no Option, and Option with it is not Option alone
    case level5Shift:
    case modeSwitch:
    case metaL:
    case metaR:
    case hyperL:
    case hyperR:
        return modifierFlag::function;
    default:
        return 0;
    }
}

bool X11Keyboard::isLockKey(int keycode) const {
    return isLock(keysym(keycode));
}

quint16 X11Keyboard::maskOf(xcb_keysym_t first, xcb_keysym_t second) const {
    for (size_t bit = 0; bit < m_rows.size(); ++bit)
        for (const quint8 key : m_rows[bit])
            if (const auto symbol = keysym(key); symbol == first || symbol == second)
                return static_cast<quint16>(1U << bit);
    return 0;
}

quint16 X11Keyboard::stateMask(quint32 modifier) const {
    switch (modifier) {
    case hotKeyModifier::command:
        return maskOf(superL, superR);
    case hotKeyModifier::option:
        return maskOf(altL, altR);
    case hotKeyModifier::shift:
        return XCB_MOD_MASK_SHIFT;
    case hotKeyModifier::control:
        return XCB_MOD_MASK_CONTROL;
    default:
        return 0;
    }
}

std::vector<quint16> X11Keyboard::lockMasks() const {
    std::vector<quint16> masks{XCB_MOD_MASK_LOCK};
    for (const quint16 mask : {maskOf(numLock, numLock), maskOf(scrollLock, scrollLock)})
        if (mask && std::find(masks.begin(), masks.end(), mask) == masks.end())
            masks.push_back(mask);
    return masks;
}

std::vector<quint8> keysDown(XcbClient &client) {
    std::vector<quint8> down;
    const auto answer = client.reply<xcb_query_keymap_reply_t>(xcb_query_keymap(client.connection()));
    for (int key = 0; answer && key < 256; ++key)
        if (answer->keys[key / 8] & (1 << (key % 8)))
            down.push_back(static_cast<quint8>(key));
    return down;
}

quint8 selectKeyboardNotices(XcbClient &client) {
    auto *connection = client.connection();
    const auto *extension = client.link().extension(xcb_xkb_id);
    if (!extension)
        return 0;
    const auto use = client.reply<xcb_xkb_use_extension_reply_t>(
        xcb_xkb_use_extension(connection, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION));
    if (!use || !use->supported)
        return 0;
    constexpr quint16 stateParts =
        XCB_XKB_STATE_PART_GROUP_STATE | XCB_XKB_STATE_PART_MODIFIER_LOCK | XCB_XKB_STATE_PART_MODIFIER_STATE;
    xcb_xkb_select_events_details_t details{};
    details.affectNewKeyboard = details.newKeyboardDetails = XCB_XKB_NKN_DETAIL_KEYCODES;
    details.affectState = details.stateDetails = stateParts;
    constexpr quint16 which =
        XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY | XCB_XKB_EVENT_TYPE_STATE_NOTIFY;
    constexpr quint16 mapParts = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    xcb_xkb_select_events_aux(connection, XCB_XKB_ID_USE_CORE_KBD, which, 0, XCB_XKB_EVENT_TYPE_MAP_NOTIFY, mapParts,
                              mapParts, &details);
    xcb_discard_reply(connection, xcb_xkb_per_client_flags(connection, XCB_XKB_ID_USE_CORE_KBD,
                                                           XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT,
                                                           XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT, 0, 0, 0)
                                      .sequence);
    return extension->first_event;
}

KeyboardNotice keyboardNotice(const xcb_generic_event_t &event, quint8 firstXkbEvent) {
    const quint8 type = event.response_type & 0x7f;
    KeyboardNotice notice;
    if (type == XCB_MAPPING_NOTIFY)
        notice.isMapping = true;
    if (firstXkbEvent == 0 || type != firstXkbEvent)
        return notice;
    switch (event.pad0) { // XKB tells the kind of its event here
    case XCB_XKB_NEW_KEYBOARD_NOTIFY:
    case XCB_XKB_MAP_NOTIFY:
        notice.isMapping = true;
        break;
    case XCB_XKB_STATE_NOTIFY: {
        const auto &state = reinterpret_cast<const xcb_xkb_state_notify_event_t &>(event);
        notice.isState = true;
        notice.group = state.group;
        notice.modifiers = state.mods;
        notice.isCapsLocked = state.lockedMods & XCB_MOD_MASK_LOCK;
        break;
    }
    default:
        break;
    }
    return notice;
}

KeyboardNotice keyboardState(XcbClient &client) {
    KeyboardNotice notice;
    if (!client.link().extension(xcb_xkb_id))
        return notice;
    const auto state =
        client.reply<xcb_xkb_get_state_reply_t>(xcb_xkb_get_state(client.connection(), XCB_XKB_ID_USE_CORE_KBD));
    if (!state)
        return notice;
    notice.isState = true;
    notice.group = state->group;
    notice.modifiers = state->mods;
    notice.isCapsLocked = state->lockedMods & XCB_MOD_MASK_LOCK;
    return notice;
}

} // namespace tavrine
