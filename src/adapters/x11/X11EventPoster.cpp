#include "adapters/x11/X11EventPoster.h"

#include "base/VirtualKeys.h"
#include "ports/EventMonitors.h"

#include <algorithm>
#include <utility>

#include <xcb/xtest.h>

namespace tavrine {
namespace {

constexpr xcb_window_t noWindow = XCB_WINDOW_NONE;
constexpr int deepestWindow = 16;
constexpr int controlPosition = 29 + xKeycodeOffset; // where a keyboard has these keys that is mapped unusually
constexpr int shiftPosition = 42 + xKeycodeOffset;
constexpr int altPosition = 56 + xKeycodeOffset;

/// A window manager that gets no turn comes to it within this, unless it has stopped.
constexpr qint64 longestWayMs = 1500;
/// The same where it names no active window: for a moment between two, or because there is none.
constexpr qint64 longestPauseMs = 500;
/// A keyboard that was held that long may have been free since, and no notice of it have come.
constexpr qint64 longestKeptMs = 10'000;

int orElse(int keycode, int fallback) {
    return keycode ? keycode : fallback;
}

} // namespace

X11EventPoster::X11EventPoster(std::function<QString()> text)
    : m_client([this](const xcb_generic_event_t &event) { handle(event); }), m_text(std::move(text)) {
    if (!m_client.isConnected())
        return;
    m_canPost = m_client.link().extension(xcb_test_id);
    m_window = xcb_generate_id(m_client.connection());
    const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_client.connection(), 0, m_window, m_client.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    m_client.flush();
}

void X11EventPoster::postKeyboardEvent(int keyCode, bool isKeyDown, quint32 flags) {
    static_cast<void>(m_client.takeIsLate());
    m_canPost = m_client.isConnected() && (m_canPost || m_client.link().extension(xcb_test_id));
    if (isKeyDown)
        m_failure = m_canPost ? QString() : QStringLiteral("the X server takes no keys from this program");
    if (!m_canPost) {
        if (isKeyDown)
            m_isHeldBack = m_client.takeIsLate();
        return;
    }
    if (!isKeyDown) {
        release();
        return;
    }
    release(); // of a chord whose key-up never came
    if (auto keyboard = X11Keyboard::read(m_client))
        m_keyboard = std::move(*keyboard); // else the one of the last chord, which is most likely still right
    const bool isUnderWay = isKeyboardUnderWay();
    m_isHeldBack = m_client.takeIsLate() || isUnderWay || isPressKept();
    if (m_isHeldBack)
        return; // whose window has the keyboard, and so which chord pastes there, would be late too
    const Chord chord = chordFor(keyCode, flags);
    m_isHeldBack = m_client.takeIsLate();
    if (!m_isHeldBack)
        press(chord);
}

X11EventPoster::Chord X11EventPoster::chordFor(int keyCode, quint32 flags) {
    bool hasControl = flags & (modifierFlag::control | modifierFlag::command);
    bool hasShift = flags & modifierFlag::shift;
    Chord chord;
    chord.keycode = xKeycode(keyCode).value_or(0);
    const int group = keyboardState(m_client).group;
    if (keyCode == virtualKey::v && (flags & modifierFlag::deviceIndependent) == modifierFlag::command) {
        // Programs know the chord by its letter, which a layout may have elsewhere, or not at all.
        const int letter = m_keyboard.keycode('v', group);
        PasteChord paste = pasteChordOfTarget();
        if (letter == 0 && !paste.isInsert)
            paste = {.hasControl = false, .hasShift = true, .isInsert = true, .pastesPrimary = paste.hasShift};
        hasControl = paste.hasControl;
        hasShift = paste.hasShift;
        chord.keycode = paste.isInsert ? *xKeycode(virtualKey::insert) : letter;
        if (paste.pastesPrimary)
            ownPrimary(m_text());
    }
    if (hasControl)
        chord.modifiers.push_back(orElse(m_keyboard.keycode(X11Keyboard::controlL, group), controlPosition));
    if (hasShift)
        chord.modifiers.push_back(orElse(m_keyboard.keycode(X11Keyboard::shiftL, group), shiftPosition));
    if (flags & modifierFlag::option)
        chord.modifiers.push_back(orElse(m_keyboard.keycode(X11Keyboard::altL, group), altPosition));
    return chord;
}

void X11EventPoster::press(const Chord &wanted) {
    if (wanted.keycode == 0) {
        m_failure = QStringLiteral("the keyboard has no such key");
        return;
    }
    m_pressed = wanted;
    holdServer();
    const auto &modifiers = m_keyboard.modifierKeys();
    std::vector<int> alreadyHeld;
    const auto down = keysDown(m_client);
    if (m_client.takeIsLate()) { // what the person holds is not known, and nothing is sent yet
        m_isHeldBack = true;
        m_pressed.modifiers.clear();
        release();
        return;
    }
    for (const quint8 key : down) {
        const bool isModifier = std::find(modifiers.begin(), modifiers.end(), key) != modifiers.end();
        if (std::find(wanted.modifiers.begin(), wanted.modifiers.end(), key) != wanted.modifiers.end())
            alreadyHeld.push_back(key);
        else if ((isModifier && !m_keyboard.isLockKey(key)) || key == wanted.keycode)
            m_pressed.released.push_back(key);
    }
    std::erase_if(m_pressed.modifiers,
                  [&](int key) { return std::find(alreadyHeld.begin(), alreadyHeld.end(), key) != alreadyHeld.end(); });
    // The chord's modifiers go down first: a lone Super or Alt that is let go opens a menu.
    if (!pressModifiers()) {
        m_isHeldBack = true;
        m_pressed.released.clear();
        awaitKeptPress();
        release();
        return;
    }
    for (const int key : m_pressed.released)
        send(false, key);
    send(true, m_pressed.keycode);
    m_client.flush();
}

/// False when the keyboard is held: then the first alone was sent.
bool X11EventPoster::pressModifiers() {
    for (const int key : std::exchange(m_pressed.modifiers, {})) {
        send(true, key);
        m_pressed.modifiers.push_back(key);
        if (m_pressed.modifiers.size() == 1 && isKeyboardHeld())
            return false;
    }
    return true;
}

/// A keyboard that a grab holds does not go down: the server keeps all keys for later.
bool X11EventPoster::isKeyboardHeld() {
    const auto down = keysDown(m_client);
    return m_client.takeIsLate() || std::find(down.begin(), down.end(), m_pressed.modifiers.front()) == down.end();
}

/// The receiver gets each press that is kept, and many of one modifier mean something to it. So there is no second one
/// before the first is through, which the server tells: its release follows at once and leaves no trace to look for,
/// and were it left for later, what the person types would become shortcuts. A server without XKB does not tell.
void X11EventPoster::awaitKeptPress() {
    if (m_firstXkbEvent == 0)
        m_firstXkbEvent = selectKeyboardNotices(m_client);
    m_client.drain(); // notices of before
    if (m_firstXkbEvent != 0)
        m_kept.start();
}

bool X11EventPoster::isPressKept() {
    m_client.drain();
    if (m_kept.isValid() && m_kept.elapsed() >= longestKeptMs)
        m_kept.invalidate();
    return m_kept.isValid();
}

/// A window that goes leaves the keyboard to nobody until the window manager, if there is one that tells of it, gives
/// it on. What is typed before that would be lost.
bool X11EventPoster::isKeyboardUnderWay() {
    const auto focus = m_client.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(m_client.connection()));
    const auto active = m_client.words(m_client.root(), "_NET_ACTIVE_WINDOW");
    const bool isWithNobody =
        focus && (focus->focus <= XCB_INPUT_FOCUS_POINTER_ROOT || focus->focus == m_client.root());
    if (isWithNobody && !active.empty()) {
        if (!m_underWay.isValid())
            m_underWay.start();
        if (m_underWay.elapsed() < (active[0] == noWindow ? longestPauseMs : longestWayMs))
            return true;
    }
    m_underWay.invalidate();
    return false;
}

void X11EventPoster::release() {
    if (m_pressed.keycode == 0)
        return;
    if (!m_isHeldBack)
        send(false, m_pressed.keycode);
    for (const int key : m_pressed.released)
        if (key != m_pressed.keycode)
            send(true, key); // before the chord's own go: the receiver sees no lone modifier
    for (auto key = m_pressed.modifiers.rbegin(); key != m_pressed.modifiers.rend(); ++key)
        send(false, *key);
    freeServer();
    m_pressed = {};
}

/// A modifier that another program let go of between the look at the keys and its second press here would stay down for
/// good. So the server listens to nobody else from the one to the other: for the rest of this turn at most.
void X11EventPoster::holdServer() {
    xcb_grab_server(m_client.connection());
    m_isServerHeld = true;
    QMetaObject::invokeMethod(
        &m_turn, [this] { freeServer(); }, Qt::QueuedConnection);
}

void X11EventPoster::freeServer() {
    if (std::exchange(m_isServerHeld, false))
        xcb_ungrab_server(m_client.connection());
    m_client.flush();
}

void X11EventPoster::send(bool isPress, int keycode) {
    xcb_test_fake_input(m_client.connection(), isPress ? XCB_KEY_PRESS : XCB_KEY_RELEASE, static_cast<quint8>(keycode),
                        XCB_CURRENT_TIME, m_client.root(), 0, 0, 0);
}

PasteChord X11EventPoster::pasteChordOfTarget() {
    auto *connection = m_client.connection();
    const auto focus = m_client.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(connection));
    xcb_window_t window = focus ? focus->focus : noWindow;
    if (window == XCB_INPUT_FOCUS_POINTER_ROOT) {
        const auto pointer = m_client.reply<xcb_query_pointer_reply_t>(xcb_query_pointer(connection, m_client.root()));
        window = pointer ? pointer->child : noWindow;
    }
    // The keyboard may be with a window inside the one that carries the class.
    for (int depth = 0; depth < deepestWindow && window != XCB_WINDOW_NONE && window != m_client.root(); ++depth) {
        const QByteArray text = m_client.text(m_client.ask(window, "WM_CLASS"));
        if (!text.isEmpty()) {
            const auto parts = text.split('\0');
            return pasteChordFor(parts.at(0), parts.size() > 1 ? parts.at(1) : QByteArray());
        }
        const auto tree = m_client.reply<xcb_query_tree_reply_t>(xcb_query_tree(connection, window));
        window = tree ? tree->parent : noWindow;
    }
    return {};
}

} // namespace tavrine
