#include "adapters/x11/X11MouseEvents.h"

#include "adapters/x11/PressedPointers.h"

#include <QGuiApplication>
#include <QWindow>

#include <algorithm>
#include <utility>

#include <xcb/xinput.h>

namespace tavrine {
namespace {

constexpr quint32 wheelButtons = 0xF0; // 4 to 7
constexpr quint32 lastButton = 31;
constexpr quint32 everAfter = 0x7FFFFFFF; // the server's times run in a circle

struct Kinds {
    quint32 up;
    quint32 dragged;
};

Kinds kindsOf(quint32 button) {
    if (button == 1)
        return {eventMask::leftMouseUp, eventMask::leftMouseDragged};
    if (button == 3)
        return {eventMask::rightMouseUp, eventMask::rightMouseDragged};
    return {eventMask::otherMouseUp, eventMask::otherMouseDragged};
}

/// With several buttons down it is a drag of the first of them in this order.
quint32 motionKind(quint32 buttons) {
    for (const quint32 button : {1U, 3U})
        if (buttons & (1U << button))
            return kindsOf(button).dragged;
    return buttons ? eventMask::otherMouseDragged : eventMask::mouseMoved;
}

/// A wheel that turns smoothly makes motions too, of other axes.
bool isMove(const xcb_input_raw_button_press_event_t &raw) {
    constexpr quint32 bothAxes = 3;
    return raw.valuators_len > 0 && (*xcb_input_raw_button_press_valuator_mask(&raw) & bothAxes);
}

} // namespace

X11MouseEvents::X11MouseEvents(Tell tell) : m_tell(std::move(tell)) {
    m_pause.setSingleShot(true);
    m_pause.setTimerType(Qt::PreciseTimer);
    m_pause.callOnTimeout(this, &X11MouseEvents::onPauseOver);
}

void X11MouseEvents::noteOwnPress(quint32 time) {
    m_ownPresses[m_ownPressCount++ % m_ownPresses.size()] = time;
}

void X11MouseEvents::watch(Wanted wanted) {
    if (wanted != Wanted::nothing && (m_inputOpcode == 0 || !m_client->isConnected()))
        connectAnew();
    if (m_inputOpcode == 0 || wanted == m_wanted)
        return;
    const bool isBeginning = m_wanted == Wanted::nothing;
    m_wanted = wanted;
    select();
    if (isBeginning)
        takePointers();
    else
        static_cast<void>(m_client->link().finish()); // either way what happens from here on is told
}

void X11MouseEvents::connectAnew() {
    if (m_client) // it may be at work, and goes with the next turn
        QMetaObject::invokeMethod(
            this, [old = std::shared_ptr<XcbClient>(std::move(m_client))] {}, Qt::QueuedConnection);
    m_pause.stop();
    m_wanted = Wanted::nothing;
    m_inputOpcode = 0;
    m_client = std::make_unique<XcbClient>([this](const xcb_generic_event_t &event) { handle(event); },
                                           [this] { onDrained(); });
    if (!m_client->isConnected())
        return;
    const auto *extension = m_client->link().extension(xcb_input_id);
    // Clients of an earlier version get no raw events while another client holds a grab.
    if (extension &&
        m_client->reply<xcb_input_xi_query_version_reply_t>(xcb_input_xi_query_version(m_client->connection(), 2, 2)))
        m_inputOpcode = extension->major_opcode;
}

void X11MouseEvents::select() {
    quint32 mask = 0;
    if (m_wanted != Wanted::nothing)
        mask |= XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE;
    if (m_wanted == Wanted::all)
        mask |= XCB_INPUT_XI_EVENT_MASK_RAW_MOTION;
    const struct {
        xcb_input_event_mask_t head;
        quint32 mask;
    } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, mask};
    xcb_input_xi_select_events(m_client->connection(), m_client->root(), 1, &selection.head);
    m_client->flush();
}

void X11MouseEvents::handle(const xcb_generic_event_t &event) {
    const auto &raw = eventAs<xcb_input_raw_button_press_event_t>(event);
    if (eventType(event) != XCB_GE_GENERIC || raw.extension != m_inputOpcode)
        return;
    if (raw.event_type == XCB_INPUT_RAW_MOTION && isMove(raw))
        onMotion(raw.deviceid);
    else if (raw.event_type == XCB_INPUT_RAW_BUTTON_PRESS || raw.event_type == XCB_INPUT_RAW_BUTTON_RELEASE)
        onButton(raw.deviceid, raw.detail, raw.event_type == XCB_INPUT_RAW_BUTTON_PRESS, raw.time);
}

void X11MouseEvents::onMotion(quint16 device) {
    m_hasNews = true;
    const Pointer &pointer = m_pointers[device];
    const Note note{device, motionKind(pointer.buttons), pointer.press, pointer.press + everAfter};
    if (m_notes.empty() || m_notes.back() != note)
        m_notes.push_back(note);
}

void X11MouseEvents::onButton(quint16 device, quint32 button, bool isPress, quint32 time) {
    if (button == 0 || button > lastButton || (wheelButtons & 1U << button))
        return;
    m_hasNews = true;
    Pointer &pointer = m_pointers[device];
    if (isPress) {
        if ((pointer.buttons & ~(1U << button)) == 0) {
            pointer.press = time;
            m_lastPress = time;
            m_pressWait.setRemainingTime(longestWait);
        }
        pointer.buttons |= 1U << button;
        m_hasPress = true;
        return;
    }
    m_notes.push_back({device, kindsOf(button).up, pointer.press, time});
    pointer.buttons &= ~(1U << button);
}

/// What is pressed when the watching begins.
void X11MouseEvents::takePointers() {
    m_pointers.clear();
    m_notes.clear(); // of an earlier watching
    const bool isDownHere = m_ownPressCount > 0 && QGuiApplication::mouseButtons() != Qt::NoButton;
    for (const auto &[device, buttons] : pressedPointers(m_client->link()))
        m_pointers[device] = {.buttons = buttons,
                              .press = isDownHere ? m_ownPresses[(m_ownPressCount - 1) % m_ownPresses.size()] : 0U};
}

void X11MouseEvents::onDrained() {
    if (!std::exchange(m_hasNews, false))
        return;
    m_client->setReading(false);
    m_pause.start(shortestPause);
    if (!m_hasPress)
        tellAll();
}

void X11MouseEvents::onPauseOver() {
    m_hasPress = false;
    tellAll();
    m_client->drain();
    m_client->setReading(!m_hasNews);
    onDrained();
    if (!m_notes.empty() && !m_pause.isActive())
        m_pause.start(shortestPause);
}

void X11MouseEvents::tellAll() {
    while (!m_notes.empty() && !mayBecomeOurs(m_notes.front())) {
        const Note note = m_notes.front();
        m_notes.pop_front();
        if (!isOurs(note))
            m_tell(note.type);
    }
}

bool X11MouseEvents::isOurs(const Note &note) {
    if (note.type != eventMask::mouseMoved)
        return hasOwnPress(note);
    Pointer &pointer = m_pointers[note.device];
    pointer.isOverOurs = isOverOurWindow(note.device);
    return pointer.isOverOurs;
}

/// Times of the server: each is compared as how much it comes after the note's press.
bool X11MouseEvents::hasOwnPress(const Note &note) const {
    const auto isOfLaterDrag = [&](quint32 after) {
        return std::any_of(m_pointers.begin(), m_pointers.end(), [&](const auto &pointer) {
            const quint32 began = pointer.second.press - note.press;
            return began > 0 && began <= after;
        });
    };
    const auto *const end = m_ownPresses.data() + std::min(m_ownPressCount, m_ownPresses.size());
    return note.press != 0 && std::any_of(m_ownPresses.data(), end, [&](quint32 own) {
               const quint32 after = own - note.press;
               return after <= note.last - note.press && !isOfLaterDrag(after);
           });
}

/// Before it was pressed the pointer was moved over a window of ours.
bool X11MouseEvents::mayBecomeOurs(const Note &note) const {
    const auto pointer = m_pointers.find(note.device);
    return note.type != eventMask::mouseMoved && note.press != 0 && note.press == m_lastPress &&
           !m_pressWait.hasExpired() && pointer != m_pointers.end() && pointer->second.isOverOurs && !hasOwnPress(note);
}

bool X11MouseEvents::isOverOurWindow(quint16 device) {
    std::vector<xcb_window_t> ours;
    bool isAnyManaged = false;
    const auto windows = QGuiApplication::topLevelWindows();
    for (const QWindow *window : windows) {
        if (!window->handle() || !window->isVisible())
            continue;
        ours.push_back(static_cast<xcb_window_t>(window->winId()));
        isAnyManaged = isAnyManaged || !(window->flags() & Qt::BypassWindowManagerHint);
    }
    xcb_window_t window = ours.empty() ? static_cast<xcb_window_t>(XCB_WINDOW_NONE) : m_client->root();
    // Down from the root, through the window manager's frame; deeper than a few levels no program's window lies.
    for (int depth = 0; depth < (isAnyManaged ? 8 : 1) && window != XCB_WINDOW_NONE; ++depth) {
        const auto answer = m_client->link().reply<xcb_input_xi_query_pointer_reply_t>(
            xcb_input_xi_query_pointer(m_client->connection(), window, device));
        if (!answer)
            return false;
        window = answer->child;
        if (std::find(ours.begin(), ours.end(), window) != ours.end())
            return true;
    }
    return false;
}

} // namespace tavrine
