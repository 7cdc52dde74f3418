#include "adapters/x11/X11ApplicationActivator.h"

#include "adapters/x11/X11WindowDescription.h"

#include <QGuiApplication>
#include <QWindow>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

namespace tavrine {
namespace {

constexpr quint32 sourceApplication = 1;
constexpr quint32 sourcePager = 2;
constexpr quint32 iconicState = 3;

/// The end of a startup identifier tells the server's time of the click or the key; 0 where it does not.
quint32 timeOf(const QByteArray &startupId) {
    constexpr QByteArrayView mark("_TIME");
    const auto found = startupId.lastIndexOf(mark);
    return found < 0 ? 0 : startupId.mid(found + mark.size()).toUInt();
}

bool isAlive(qint64 processIdentifier) {
    return processIdentifier <= 0 || ::kill(static_cast<pid_t>(processIdentifier), 0) == 0 || errno == EPERM;
}

} // namespace

X11ApplicationActivator::X11ApplicationActivator()
    : m_client([this](const xcb_generic_event_t &event) {
          if ((event.response_type & 0x7f) == XCB_PROPERTY_NOTIFY)
              m_serverTime = reinterpret_cast<const xcb_property_notify_event_t &>(event).time;
      }) {
    if (!m_client.isConnected())
        return;
    m_window = xcb_generate_id(m_client.connection());
    const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_client.connection(), 0, m_window, m_client.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    m_client.flush();
}

bool X11ApplicationActivator::isThere(xcb_window_t window) const {
    if (window == XCB_WINDOW_NONE)
        return false;
    static_cast<void>(m_client.takeIsLate());
    const bool isAnswered = m_client.reply<xcb_get_window_attributes_reply_t>(
                                xcb_get_window_attributes(m_client.connection(), window)) != nullptr;
    return isAnswered || m_client.takeIsLate(); // a server that is late does not say that it has gone
}

xcb_window_t X11ApplicationActivator::windowOf(const RunningApplication &application) const {
    if (!m_client.isConnected() || !isAlive(application.processIdentifier))
        return XCB_WINDOW_NONE;
    if (isThere(application.window))
        return application.window;
    if (application.processIdentifier == 0)
        return XCB_WINDOW_NONE;
    // That window is closed; the program may have others, of which the uppermost counts.
    auto windows = m_client.words(m_client.root(), "_NET_CLIENT_LIST_STACKING");
    std::reverse(windows.begin(), windows.end());
    for (const quint32 window : windows) {
        const auto pid = m_client.words(window, "_NET_WM_PID");
        if (!pid.empty() && pid[0] == static_cast<quint32>(application.processIdentifier))
            return window;
    }
    return XCB_WINDOW_NONE;
}

bool X11ApplicationActivator::isRunning(const RunningApplication &application) const {
    return windowOf(application) != XCB_WINDOW_NONE;
}

bool X11ApplicationActivator::activate(const RunningApplication &application) {
    const xcb_window_t window = windowOf(application);
    if (window == XCB_WINDOW_NONE)
        return false;
    activateWindow(window);
    return true;
}

void X11ApplicationActivator::noteStartup(const QByteArray &startupId) {
    m_startupTime = timeOf(startupId);
}

void X11ApplicationActivator::bringForward(quint32 window) {
    flushQtConnection(); // the window must be known before it can be given the keyboard
    const quint32 startupTime = std::exchange(m_startupTime, 0);
    if (startupTime == 0 || !hasWindowManager()) {
        activateWindow(window);
        return;
    }
    const quint32 data[5] = {sourceApplication, startupTime, 0, 0, 0};
    sendToRoot(window, "_NET_ACTIVE_WINDOW", data);
}

void X11ApplicationActivator::activateWindow(xcb_window_t window) {
    if (!m_client.isConnected())
        return;
    if (hasWindowManager()) {
        const quint32 data[5] = {sourcePager, serverTime(), 0, 0, 0};
        sendToRoot(window, "_NET_ACTIVE_WINDOW", data);
        return;
    }
    const quint32 above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(m_client.connection(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    focusWindow(window);
}

void X11ApplicationActivator::hide() {
    if (!m_client.isConnected())
        return;
    if (!hasWindowManager()) {
        focusWindow(XCB_INPUT_FOCUS_POINTER_ROOT);
        return;
    }
    const auto windows = QGuiApplication::topLevelWindows();
    for (const QWindow *window : windows) {
        const bool isManaged =
            window->handle() && window->isVisible() && !(window->flags() & Qt::BypassWindowManagerHint);
        const quint32 data[5] = {iconicState, 0, 0, 0, 0};
        // Panels stay: nearly none is in the task bar, from where it could come back.
        if (isManaged && !isDescribed(*window))
            sendToRoot(static_cast<xcb_window_t>(window->winId()), "WM_CHANGE_STATE", data);
    }
}

bool X11ApplicationActivator::hasWindowManager() const {
    if (!m_client.isConnected())
        return false;
    const auto named = m_client.words(m_client.root(), "_NET_SUPPORTING_WM_CHECK");
    return !named.empty() && m_client.words(named[0], "_NET_SUPPORTING_WM_CHECK") == named;
}

xcb_window_t X11ApplicationActivator::focusedWindow() const {
    if (!m_client.isConnected())
        return XCB_WINDOW_NONE;
    const auto focus = m_client.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(m_client.connection()));
    return focus ? focus->focus : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

void X11ApplicationActivator::focusWindow(xcb_window_t window) {
    if (!m_client.isConnected() || window == XCB_WINDOW_NONE)
        return;
    xcb_set_input_focus(m_client.connection(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    m_client.flush();
}

quint32 X11ApplicationActivator::serverTime() {
    // An empty change of a property is answered with the server's time, before any reply that follows.
    xcb_change_property(m_client.connection(), XCB_PROP_MODE_APPEND, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0,
                        nullptr);
    (void)m_client.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(m_client.connection()));
    m_client.drain();
    return m_serverTime;
}

void X11ApplicationActivator::sendToRoot(xcb_window_t window, const char *message, const quint32 (&data)[5]) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = m_client.atom(message);
    std::copy(std::begin(data), std::end(data), event.data.data32);
    xcb_send_event(m_client.connection(), 0, m_client.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&event));
    m_client.flush();
}

} // namespace tavrine
