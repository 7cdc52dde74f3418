#include "adapters/x11/X11ScreenSaverKeeper.h"

#include "adapters/x11/XcbLink.h"

#include <QCoreApplication>
#include <QPointer>

#include <condition_variable>
#include <mutex>
#include <thread>

#include <xcb/screensaver.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto longestWait = 1s; // for the server, each time

bool suspend(XcbLink &link) {
    if (!link.isOpen() || !link.extension(xcb_screensaver_id))
        return false;
    const auto version =
        link.reply<xcb_screensaver_query_version_reply_t>(xcb_screensaver_query_version(link.connection(), 1, 1));
    constexpr std::uint32_t on = 1;
    return version && link.isRefused(xcb_screensaver_suspend_checked(link.connection(), on)) == false;
}

void resetIdleTime(XcbLink &link) {
    const auto info =
        link.reply<xcb_screensaver_query_info_reply_t>(xcb_screensaver_query_info(link.connection(), link.root()));
    if (!info || info->state == XCB_SCREENSAVER_STATE_ON)
        return;
    xcb_force_screen_saver(link.connection(), XCB_SCREEN_SAVER_RESET);
    link.flush();
}

} // namespace

struct X11ScreenSaverKeeper::Session {
    std::mutex mutex;
    std::condition_variable stopped;
    bool isStopped = false;

    /// False when it was stopped meanwhile.
    bool sleep(std::chrono::milliseconds length) {
        std::unique_lock lock(mutex);
        return !stopped.wait_for(lock, length, [this] { return isStopped; });
    }
    void stop() {
        {
            const std::lock_guard lock(mutex);
            isStopped = true;
        }
        stopped.notify_all();
    }
};

void X11ScreenSaverKeeper::want(const PowerNeeds &needs, const QString & /*why*/) {
    if (needs.display && !m_session)
        start();
    else if (!needs.display)
        stop();
}

void X11ScreenSaverKeeper::start() {
    m_session = std::make_shared<Session>();
    m_isAsking = true;
    std::thread([session = m_session, pause = m_pause, self = QPointer(this)] {
        const auto tell = [&](bool isHeld) {
            if (auto *const application = QCoreApplication::instance())
                QMetaObject::invokeMethod(
                    application,
                    [self, isHeld, session] {
                        if (self)
                            self->onAnswer(session.get(), isHeld);
                    },
                    Qt::QueuedConnection);
        };
        XcbLink link(longestWait);
        tell(suspend(link));
        while (link.isOpen() && session->sleep(pause))
            resetIdleTime(link);
        if (!link.isOpen())
            tell(false);
    }).detach();
}

/// The thread gives everything back by ending, as soon as the server lets it.
void X11ScreenSaverKeeper::stop() {
    if (m_session)
        m_session->stop();
    m_session.reset();
    m_isAsking = false;
    m_isHeld = false;
}

void X11ScreenSaverKeeper::onAnswer(const Session *session, bool isHeld) {
    if (session != m_session.get())
        return;
    m_isAsking = false;
    m_isHeld = isHeld;
    changed();
}

} // namespace tavrine
