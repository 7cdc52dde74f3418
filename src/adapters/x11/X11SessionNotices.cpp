#include "adapters/x11/X11SessionNotices.h"

#include <xcb/screensaver.h>

namespace tavrine {

X11SessionNotices::~X11SessionNotices() = default;

void X11SessionNotices::begin() {
    LinuxSessionNotices::begin();
    watchServer();
}

void X11SessionNotices::end() {
    LinuxSessionNotices::end();
    m_client.reset();
}

void X11SessionNotices::watchServer() {
    m_client = std::make_unique<XcbClient>([this](const xcb_generic_event_t &event) { handle(event); });
    if (!m_client->isConnected())
        return;
    auto *const connection = m_client->connection();
    const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection, m_client->root(), XCB_CW_EVENT_MASK, &events);
    if (const auto *saver = m_client->link().extension(xcb_screensaver_id)) {
        m_screenSaverNotice = static_cast<quint8>(saver->first_event + XCB_SCREENSAVER_NOTIFY);
        xcb_screensaver_select_input(connection, m_client->root(), XCB_SCREENSAVER_EVENT_NOTIFY_MASK);
    }
    m_areScreensOff = false;
    m_desktop = rootNumber("_NET_CURRENT_DESKTOP");
    m_isShowingDesktop = rootNumber("_NET_SHOWING_DESKTOP") != 0;
}

quint32 X11SessionNotices::rootNumber(const char *property) {
    const auto words = m_client->words(m_client->root(), property);
    return words.empty() ? 0 : words[0];
}

void X11SessionNotices::handle(const xcb_generic_event_t &event) {
    if (eventType(event) == XCB_PROPERTY_NOTIFY)
        return onRootProperty(eventAs<xcb_property_notify_event_t>(event).atom);
    if (m_screenSaverNotice == 0 || eventType(event) != m_screenSaverNotice)
        return;
    const bool areOff = eventAs<xcb_screensaver_notify_event_t>(event).state == XCB_SCREENSAVER_STATE_ON;
    if (std::exchange(m_areScreensOff, areOff) && !areOff)
        tell(SessionNotice::screensDidWake);
}

void X11SessionNotices::onRootProperty(xcb_atom_t property) {
    if (property == m_client->atom("_NET_CURRENT_DESKTOP")) {
        const quint32 desktop = rootNumber("_NET_CURRENT_DESKTOP");
        if (std::exchange(m_desktop, desktop) != desktop)
            tell(SessionNotice::activeSpaceDidChange);
    } else if (property == m_client->atom("_NET_SHOWING_DESKTOP")) {
        const bool isShowing = rootNumber("_NET_SHOWING_DESKTOP") != 0;
        if (std::exchange(m_isShowingDesktop, isShowing) && !isShowing)
            tell(SessionNotice::didUnhide);
    }
}

} // namespace tavrine
