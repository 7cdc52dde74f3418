#include "adapters/x11/X11EventMonitors.h"

#include "adapters/x11/SamePress.h"
#include "base/VirtualKeys.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

#include <algorithm>

#include <xcb/xinput.h>

namespace tavrine {
namespace {

// Held keys are compared with the server's after such a pause: releases get lost while another console is in front.
constexpr quint32 pauseMs = 2000;

constexpr quint32 releases = eventMask::leftMouseUp | eventMask::rightMouseUp | eventMask::otherMouseUp;
constexpr quint32 motions =
    eventMask::mouseMoved | eventMask::leftMouseDragged | eventMask::rightMouseDragged | eventMask::otherMouseDragged;

} // namespace

X11EventMonitors::X11EventMonitors(std::shared_ptr<const KeyboardSilence> silence)
    : m_silence(std::move(silence)), m_client([this](const xcb_generic_event_t &event) { handle(event); }),
      m_map(m_client, [this] { takeHeldKeys(); }), m_global([this] { select(); }), m_local([this] { select(); }),
      m_mouse([this](quint32 type) { tellMouse(type); }) {
    if (m_client.isConnected())
        qApp->installEventFilter(this);
}

X11EventMonitors::~X11EventMonitors() = default;

std::unique_ptr<EventMonitor> X11EventMonitors::addGlobalMonitor(quint32 mask, GlobalHandler handler) {
    return m_global.add(mask, std::move(handler));
}

std::unique_ptr<EventMonitor> X11EventMonitors::addLocalMonitor(quint32 mask, LocalHandler handler) {
    return m_local.add(mask, std::move(handler));
}

/// Clients of an earlier version get no raw events while another client holds a grab.
void X11EventMonitors::announceVersion() {
    const auto *extension = m_client.link().extension(xcb_input_id);
    if (extension &&
        m_client.reply<xcb_input_xi_query_version_reply_t>(xcb_input_xi_query_version(m_client.connection(), 2, 2)))
        m_inputOpcode = extension->major_opcode;
}

void X11EventMonitors::select() {
    const quint32 asked = m_global.asked();
    m_mouse.watch(asked & motions    ? X11MouseEvents::Wanted::all
                  : asked & releases ? X11MouseEvents::Wanted::releases
                                     : X11MouseEvents::Wanted::nothing);
    if (m_inputOpcode == 0 && m_client.isConnected())
        announceVersion();
    if (m_inputOpcode == 0)
        return;
    quint32 wanted = 0;
    if ((asked & (eventMask::keyDown | eventMask::flagsChanged)) || (m_local.asked() & eventMask::flagsChanged))
        wanted |= XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
    if (asked & (eventMask::leftMouseDown | eventMask::rightMouseDown))
        wanted |= XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS;
    if (wanted == m_selected)
        return;
    const bool startsKeys = (wanted & ~m_selected) & XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS;
    m_selected = wanted;
    struct {
        xcb_input_event_mask_t head;
        quint32 mask;
    } const selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, wanted};
    xcb_input_xi_select_events(m_client.connection(), m_client.root(), 1, &selection.head);
    if (startsKeys) {
        const KeyboardNotice state = keyboardState(m_client);
        m_group = state.group;
        m_isCapsLocked = state.isCapsLocked;
        m_heldModifiers.clear();
        m_areHeldKeysKnown = false;
        m_map.start();
    }
    m_client.flush();
}

/// What is held when the keys are first watched was pressed before.
void X11EventMonitors::takeHeldKeys() {
    if (std::exchange(m_areHeldKeysKnown, true))
        return;
    for (const quint8 key : keysDown(m_client))
        if (const quint32 flag = m_map.keyboard().modifierFlagOf(key, m_group))
            m_heldModifiers[key] = flag;
}

void X11EventMonitors::handle(const xcb_generic_event_t &event) {
    if ((event.response_type & 0x7f) == XCB_GE_GENERIC) {
        const auto &generic = reinterpret_cast<const xcb_ge_generic_event_t &>(event);
        if (generic.extension != m_inputOpcode)
            return;
        const auto &raw = reinterpret_cast<const xcb_input_raw_button_press_event_t &>(event);
        if (generic.event_type == XCB_INPUT_RAW_KEY_PRESS || generic.event_type == XCB_INPUT_RAW_KEY_RELEASE)
            onRawKey(static_cast<int>(raw.detail), generic.event_type == XCB_INPUT_RAW_KEY_PRESS, raw.time);
        else if (generic.event_type == XCB_INPUT_RAW_BUTTON_PRESS)
            onRawButton(raw.detail, raw.time);
        return;
    }
    const KeyboardNotice notice = m_map.take(event);
    if (notice.isState) {
        m_group = notice.group;
        if (m_isCapsLocked != notice.isCapsLocked) {
            m_isCapsLocked = notice.isCapsLocked;
            tellFlags();
        }
    }
}

void X11EventMonitors::onRawKey(int keycode, bool isPress, quint32 time) {
    forgetReleasedKeys(time);
    if (!isPress) {
        if (m_heldModifiers.erase(keycode) > 0) // a release that was told before changes nothing
            tellFlags();
        return;
    }
    if (m_silence && m_silence->covers(time))
        return;
    if (const quint32 flag = m_map.keyboard().modifierFlagOf(keycode, m_group)) {
        if (m_heldModifiers.emplace(keycode, flag).second) // a key that repeats is held already
            tellFlags();
        return;
    }
    if (m_map.keyboard().isLockKey(keycode) || QGuiApplication::focusWindow() || isSamePress(time, m_ownKeyTime))
        return; // keys of our own windows come from Qt
    m_global.tell({.type = eventMask::keyDown,
                   .modifierFlags = flags(),
                   .keyCode = virtualKeyOfXKeycode(keycode).value_or(-1),
                   .scrollDelta = {}});
}

void X11EventMonitors::forgetReleasedKeys(quint32 time) {
    const bool isAfterPause = time - m_lastTime > pauseMs;
    m_lastTime = time;
    if (!isAfterPause || m_heldModifiers.empty())
        return;
    const auto down = keysDown(m_client);
    std::erase_if(m_heldModifiers, [&](const auto &held) {
        return std::find(down.begin(), down.end(), static_cast<quint8>(held.first)) == down.end();
    });
}

void X11EventMonitors::onRawButton(quint32 button, quint32 time) {
    const quint32 type = button == 1 ? eventMask::leftMouseDown : button == 3 ? eventMask::rightMouseDown : 0;
    if (type && !isSamePress(time, m_ownPressTime) && !isPointerOverOurWindow())
        m_global.tell({.type = type, .modifierFlags = flags(), .keyCode = -1, .scrollDelta = {}});
}

void X11EventMonitors::tellMouse(quint32 type) {
    m_global.tell({.type = type, .modifierFlags = flags(), .keyCode = -1, .scrollDelta = {}});
}

bool X11EventMonitors::isPointerOverOurWindow() {
    std::vector<xcb_window_t> ours;
    const auto windows = QGuiApplication::topLevelWindows();
    for (const QWindow *window : windows)
        if (window->handle() && window->isVisible())
            ours.push_back(static_cast<xcb_window_t>(window->winId()));
    xcb_window_t window = m_client.root();
    // Down from the root, through the window manager's frame; deeper than a few levels no program's window lies.
    for (int depth = 0; depth < 8 && window != XCB_WINDOW_NONE; ++depth) {
        const auto answer = m_client.reply<xcb_query_pointer_reply_t>(xcb_query_pointer(m_client.connection(), window));
        if (!answer)
            return false;
        window = answer->child;
        if (std::find(ours.begin(), ours.end(), window) != ours.end())
            return true;
    }
    return false;
}

quint32 X11EventMonitors::flags() const {
    quint32 all = m_isCapsLocked ? modifierFlag::capsLock : 0;
    for (const auto &[keycode, flag] : m_heldModifiers)
        all |= flag;
    return all;
}

void X11EventMonitors::tellFlags() {
    const InputEvent event{.type = eventMask::flagsChanged, .modifierFlags = flags(), .keyCode = -1, .scrollDelta = {}};
    (QGuiApplication::focusWindow() ? m_local : m_global).tell(event);
}

bool X11EventMonitors::eventFilter(QObject *watched, QEvent *event) {
    // Qt hands an event to the window first and then to each widget: the first time is the one that counts.
    if (!watched->isWindowType())
        return false;
    if (event->type() == QEvent::KeyPress)
        m_ownKeyTime = static_cast<quint32>(static_cast<const QKeyEvent &>(*event).timestamp());
    else if (event->type() == QEvent::MouseButtonPress) {
        m_ownPressTime = static_cast<quint32>(static_cast<const QMouseEvent &>(*event).timestamp());
        m_mouse.noteOwnPress(m_ownPressTime);
    }
    return m_local.tellOwn(*event);
}

} // namespace tavrine
