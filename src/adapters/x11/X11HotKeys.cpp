#include "adapters/x11/X11HotKeys.h"

#include "base/VirtualKeys.h"

namespace tavrine {
namespace {

constexpr quint32 allModifiers[] = {hotKeyModifier::command, hotKeyModifier::shift, hotKeyModifier::option,
                                    hotKeyModifier::control};

// All combinations of the bits, none of them included.
std::vector<quint16> combinations(const std::vector<quint16> &bits) {
    std::vector<quint16> all{0};
    for (const quint16 bit : bits) {
        const size_t count = all.size();
        for (size_t i = 0; i < count; ++i)
            all.push_back(static_cast<quint16>(all[i] | bit));
    }
    return all;
}

} // namespace

X11HotKeys::X11HotKeys() : m_client([this](const xcb_generic_event_t &event) { handle(event); }) {
    if (!m_client.isConnected())
        return;
    m_firstXkbEvent = selectKeyboardNotices(m_client);
    m_keyboard = X11Keyboard::read(m_client);
    m_client.flush();
}

std::optional<quint16> X11HotKeys::stateOf(quint32 modifiers) const {
    quint16 state = 0;
    for (const quint32 modifier : allModifiers) {
        if (!(modifiers & modifier))
            continue;
        const quint16 mask = m_keyboard.stateMask(modifier);
        if (!mask)
            return std::nullopt; // the layout has no such key: a grab without it would take another combination
        state |= mask;
    }
    return state;
}

std::vector<quint16> X11HotKeys::grab(quint8 keycode, quint32 modifiers) {
    const auto state = stateOf(modifiers);
    if (!state)
        return {};
    std::vector<std::pair<quint16, xcb_void_cookie_t>> requests;
    for (const quint16 locks : combinations(m_keyboard.lockMasks())) {
        const auto exact = static_cast<quint16>(*state | locks);
        requests.emplace_back(exact, xcb_grab_key_checked(m_client.connection(), 1, m_client.root(), exact, keycode,
                                                          XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    std::vector<quint16> grabbed;
    bool isTaken = false;
    for (const auto &[exact, cookie] : requests) {
        const XcbReply<xcb_generic_error_t> error{xcb_request_check(m_client.connection(), cookie)};
        if (error)
            isTaken = true; // BadAccess: another program has this state of it
        else
            grabbed.push_back(exact);
    }
    if (isTaken) {
        for (const quint16 exact : grabbed)
            xcb_ungrab_key(m_client.connection(), keycode, m_client.root(), exact);
        grabbed.clear();
    }
    m_client.flush();
    return grabbed;
}

std::optional<HotKeyRef> X11HotKeys::registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) {
    const auto keycode = xKeycode(keyCode);
    if (!m_client.isConnected() || !keycode || *keycode > 255)
        return std::nullopt;
    Registration registration{static_cast<quint8>(*keycode), modifiers, id, {}};
    for (const auto &[ref, other] : m_registrations)
        if (other.keycode == registration.keycode && other.modifiers == modifiers)
            return std::nullopt; // the server would let the same connection grab twice
    registration.grabbedStates = grab(registration.keycode, modifiers);
    if (registration.grabbedStates.empty())
        return std::nullopt;
    m_registrations[++m_lastRef] = registration;
    return m_lastRef;
}

void X11HotKeys::ungrab(const Registration &registration) {
    for (const quint16 exact : registration.grabbedStates)
        xcb_ungrab_key(m_client.connection(), registration.keycode, m_client.root(), exact);
}

void X11HotKeys::unregisterHotKey(HotKeyRef ref) {
    const auto found = m_registrations.find(ref);
    if (found == m_registrations.end())
        return;
    ungrab(found->second);
    m_client.flush();
    m_registrations.erase(found);
}

void X11HotKeys::handle(const xcb_generic_event_t &event) {
    switch (event.response_type & 0x7f) {
    case XCB_KEY_PRESS:
        onPress(reinterpret_cast<const xcb_key_press_event_t &>(event));
        break;
    case XCB_KEY_RELEASE:
        if (reinterpret_cast<const xcb_key_release_event_t &>(event).detail == m_heldKeycode)
            m_heldKeycode = 0;
        break;
    default:
        if (keyboardNotice(event, m_firstXkbEvent).isMapping)
            onMappingChanged();
    }
}

void X11HotKeys::onPress(const xcb_key_press_event_t &press) {
    if (press.detail == m_heldKeycode)
        return; // it repeats
    m_heldKeycode = press.detail;
    quint16 locks = 0;
    for (const quint16 mask : m_keyboard.lockMasks())
        locks |= mask;
    const quint16 state = press.state & 0xff & ~locks;
    for (const auto &[ref, registration] : m_registrations) {
        if (registration.keycode != press.detail || stateOf(registration.modifiers) != state)
            continue;
        if (const Handler handler = m_handler) // a copy: it may register anew
            handler(HotKeyId(registration.id));
        return;
    }
}

void X11HotKeys::onMappingChanged() {
    X11Keyboard keyboard = X11Keyboard::read(m_client);
    // Keys are grabbed by position, so only another meaning of the modifier bits matters. The notice also comes when
    // the person merely changes from one keyboard to another.
    const auto meaning = [](const X11Keyboard &k) {
        std::vector<quint16> masks = k.lockMasks();
        for (const quint32 modifier : allModifiers)
            masks.push_back(k.stateMask(modifier));
        return masks;
    };
    const bool isSame = meaning(keyboard) == meaning(m_keyboard);
    m_keyboard = std::move(keyboard);
    if (isSame)
        return;
    for (auto &[ref, registration] : m_registrations)
        ungrab(registration);
    for (auto &[ref, registration] : m_registrations)
        registration.grabbedStates = grab(registration.keycode, registration.modifiers);
}

} // namespace tavrine
