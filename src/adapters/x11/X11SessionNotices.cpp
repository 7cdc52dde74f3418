#include "adapters/x11/X11SessionNotices.h"

#include <QGuiApplication>
#include <QPointer>
#include <QWindow>

#include <xcb/screensaver.h>

namespace tavrine {

X11SessionNotices::~X11SessionNotices() = default;

SessionNotices::Token X11SessionNotices::follow(std::function<void(SessionNotice)> handler) {
    const auto follower = std::make_shared<Handler>(std::move(handler));
    m_followers.push_back(follower);
    if (m_followers.size() == 1)
        begin();
    return {follower.get(), [self = QPointer(this), follower](void *) {
                *follower = nullptr; // also for what is being told
                if (!self)
                    return;
                std::erase(self->m_followers, follower);
                if (self->m_followers.empty())
                    self->end();
            }};
}

void X11SessionNotices::begin() {
    m_listening = m_events.listen([this](SessionEvent event) {
        if (event == SessionEvent::wokeUp)
            tell(SessionNotice::didWake);
        else if (event == SessionEvent::isUnlocked)
            tell(SessionNotice::screenIsUnlocked);
    });
    m_toolkit = std::make_unique<QObject>();
    m_hasKeyboard = QGuiApplication::focusWindow() != nullptr;
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, m_toolkit.get(), [this](const QWindow *window) {
        if (window && !m_hasKeyboard)
            tell(SessionNotice::didBecomeActive);
        m_hasKeyboard = window != nullptr;
    });
    watchServer();
}

/// Followers are told in turns of their own, so nothing of this is at work.
void X11SessionNotices::end() {
    m_listening.reset();
    m_toolkit.reset();
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

void X11SessionNotices::tell(SessionNotice notice) {
    const auto followers = m_followers; // those who follow now
    QMetaObject::invokeMethod(
        this,
        [followers, notice] {
            for (const auto &follower : followers)
                if (const Handler handler = *follower)
                    handler(notice);
        },
        Qt::QueuedConnection);
}

} // namespace tavrine
