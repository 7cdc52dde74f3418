#include "adapters/linux/LinuxSessionNotices.h"

#include <QGuiApplication>
#include <QPointer>
#include <QWindow>

namespace tavrine {

LinuxSessionNotices::~LinuxSessionNotices() = default;

bool LinuxSessionNotices::tells(SessionNotice notice) const {
    return notice == SessionNotice::didWake || notice == SessionNotice::screenIsUnlocked ||
           notice == SessionNotice::didBecomeActive;
}

SessionNotices::Token LinuxSessionNotices::follow(std::function<void(SessionNotice)> handler) {
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

void LinuxSessionNotices::begin() {
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
}

void LinuxSessionNotices::end() {
    m_listening.reset();
    m_toolkit.reset();
}

void LinuxSessionNotices::tell(SessionNotice notice) {
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
