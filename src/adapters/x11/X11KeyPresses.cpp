// What X11KeyGrabs makes of presses: whose they are, and who gets the keys after them.

#include "adapters/x11/SamePress.h"
#include "adapters/x11/X11KeyGrabs.h"

#include <xcb/xinput.h>

namespace tavrine {
namespace {

constexpr std::chrono::milliseconds focusInterval{5};
constexpr std::chrono::milliseconds tick{100}; ///< of a freeze

} // namespace

void X11KeyGrabs::handle(const xcb_generic_event_t &event) {
    switch (eventType(event)) {
    case XCB_KEY_PRESS:
        return onKeyPress(eventAs<xcb_key_press_event_t>(event));
    case XCB_KEY_RELEASE:
        if (eventAs<xcb_key_release_event_t>(event).detail == m_heldKeycode)
            m_heldKeycode = 0;
        return allow(XCB_ALLOW_SYNC_KEYBOARD);
    case XCB_GE_GENERIC: {
        const auto &raw = eventAs<xcb_input_raw_key_press_event_t>(event);
        if (raw.extension == m_inputOpcode && raw.event_type == XCB_INPUT_RAW_KEY_PRESS)
            onRawKey(static_cast<quint8>(raw.detail), raw.time);
        return;
    }
    default:
        if (const KeyboardNotice notice = m_map.take(event); notice.isState)
            m_modifiers = notice.modifiers;
    }
}

std::optional<X11KeyGrabs::Key> X11KeyGrabs::keyFor(quint8 keycode, quint16 state) const {
    quint16 locks = 0;
    for (const quint16 mask : m_map.keyboard().lockMasks())
        locks |= mask;
    const quint16 exact = state & 0xff & ~locks;
    for (const auto &[key, grab] : m_grabs)
        if (grab.keycode == keycode && stateOf(grab.modifiers) == exact)
            return key;
    return std::nullopt;
}

void X11KeyGrabs::onKeyPress(const xcb_key_press_event_t &press) {
    if (press.detail == m_rawKeycode && isSamePress(m_rawTime, press.time))
        m_rawKeycode = 0; // it came to us, so nobody else held the keyboard
    const bool isToldAlready = press.detail == m_toldKeycode && isSamePress(m_toldTime, press.time);
    if (press.detail == m_heldKeycode || isToldAlready) // it repeats
        return allow(XCB_ALLOW_SYNC_KEYBOARD);
    const auto key = keyFor(press.detail, press.state);
    if (!key) {
        // The next key went down before the hot key's came up: it belongs to whoever has the keyboard by now.
        m_heldKeycode = 0;
        return allow(XCB_ALLOW_REPLAY_KEYBOARD);
    }
    m_heldKeycode = press.detail;
    m_isFrozen = true;
    m_ticksLeft = static_cast<int>(longestFreeze / tick);
    m_deadline.start(tick);
    m_focusBefore = focus();
    m_onPress(*key, ++m_press);
}

void X11KeyGrabs::onRawKey(quint8 keycode, quint32 time) {
    if (m_silence && m_silence->covers(time))
        return;
    const auto key = m_isFrozen ? std::nullopt : keyFor(keycode, m_modifiers);
    if (!key)
        return;
    m_rawKey = *key;
    m_rawKeycode = keycode;
    m_rawTime = time;
    settleSoon();
}

void X11KeyGrabs::settleSoon() {
    QMetaObject::invokeMethod(
        this, [this] { settleRawKey(); }, Qt::QueuedConnection);
}

/// The press that belongs to a raw event is sent right after it. So after one more answer it is here, or it went to the
/// program that holds the keyboard. A server that is late is asked again: each question waits for a while.
void X11KeyGrabs::settleRawKey() {
    if (m_rawKeycode == 0 || !m_client.isConnected())
        return;
    if (!m_client.link().finish())
        return settleSoon();
    m_client.drain();
    if (m_rawKeycode == 0)
        return;
    const auto isUnder = isUnderMenu();
    if (!isUnder)
        return settleSoon();
    const quint8 keycode = std::exchange(m_rawKeycode, quint8{0});
    if (!*isUnder)
        return;
    m_toldKeycode = keycode;
    m_toldTime = m_rawTime;
    m_onPress(m_rawKey, ++m_press);
}

/// None when the server did not answer in time.
std::optional<bool> X11KeyGrabs::isUnderMenu() {
    auto *const connection = m_client.connection();
    static_cast<void>(m_client.takeIsLate());
    const auto attemptCookie = xcb_grab_pointer(connection, 0, m_client.root(), 0, XCB_GRAB_MODE_ASYNC,
                                                XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
    xcb_ungrab_pointer(connection, XCB_CURRENT_TIME); // with it: an answer that is late leaves nobody without a pointer
    const auto pointerCookie = xcb_query_pointer(connection, m_client.root());
    const auto attempt = m_client.reply<xcb_grab_pointer_reply_t>(attemptCookie);
    const auto pointer = m_client.reply<xcb_query_pointer_reply_t>(pointerCookie);
    if (m_client.takeIsLate())
        return std::nullopt;
    if (!attempt || !pointer || attempt->status == XCB_GRAB_STATUS_SUCCESS)
        return false;
    if (pointer->child == XCB_WINDOW_NONE)
        return true;
    const auto attributesCookie = xcb_get_window_attributes(connection, pointer->child);
    const auto geometryCookie = xcb_get_geometry(connection, pointer->child);
    const auto attributes = m_client.reply<xcb_get_window_attributes_reply_t>(attributesCookie);
    const auto geometry = m_client.reply<xcb_get_geometry_reply_t>(geometryCookie);
    if (m_client.takeIsLate())
        return std::nullopt;
    const auto &screen = m_client.screen();
    const bool coversAll = attributes && geometry && attributes->override_redirect &&
                           geometry->width >= screen.width_in_pixels && geometry->height >= screen.height_in_pixels;
    return !coversAll;
}

void X11KeyGrabs::letGo(quint32 press, Next next) {
    if (!m_isFrozen || press != m_press)
        return;
    if (next == Next::asBefore)
        return thaw();
    m_focusCheck.start(focusInterval);
    waitForFocus();
}

void X11KeyGrabs::waitForFocus() {
    const quint32 now = focus();
    // A window manager parks the keyboard between two windows.
    const bool isWindow = now > XCB_INPUT_FOCUS_POINTER_ROOT && now != m_focusBefore;
    if (isWindow && (isOurs(now) || isOurs(m_focusBefore)))
        thaw();
}

void X11KeyGrabs::thaw() {
    m_focusCheck.stop();
    m_deadline.stop();
    m_isFrozen = false;
    allow(XCB_ALLOW_SYNC_KEYBOARD);
}

/// How the server goes on with a keyboard that the last event froze: up to the next event, as long as the grab of the
/// press lasts, so that each key is seen here before it is somebody's.
void X11KeyGrabs::allow(quint8 mode) {
    if (m_isFrozen)
        return;
    xcb_allow_events(m_client.connection(), mode, XCB_CURRENT_TIME);
    m_client.flush();
}

quint32 X11KeyGrabs::focus() {
    const auto answer = m_client.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(m_client.connection()));
    return answer ? answer->focus : 0U;
}

bool X11KeyGrabs::isOurs(quint32 window) const {
    return m_ownWindows != 0 && (window & ~m_ownMask) == m_ownWindows;
}

} // namespace tavrine
