#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <list>
#include <memory>
#include <optional>

namespace tavrine {

enum class SessionEvent { goesToSleep, wokeUp, isLocked, isUnlocked };

/// Hears that the machine goes to sleep or that the session is locked, and the end of both, from logind and from
/// whoever draws the lock screen. Lives on the main thread. The buses are asked for nothing while nobody listens.
///
/// logind tells of every session on the machine. What it says of another one is not heard; where it does not know which
/// is ours, all are. Anybody on a bus can say so: good for giving way, not for more.
class SessionEvents final : public QObject {
    Q_OBJECT

public:
    /// Ends the listening; outlived by the events.
    using Listening = std::shared_ptr<void>;

    /// `handler` is called each time, perhaps several times for the same, and does not end the listening within
    /// the call. Nothing that was said before is heard, nor what is said until the buses are open.
    [[nodiscard]] Listening listen(std::function<void(SessionEvent)> handler);

private Q_SLOTS:
    void onSleep(bool begins) { tell(begins ? SessionEvent::goesToSleep : SessionEvent::wokeUp); }
    void onActive(bool isActive) { tell(isActive ? SessionEvent::isLocked : SessionEvent::isUnlocked); }
    void onLock(const QDBusMessage &message) { tellOf(message.path(), SessionEvent::isLocked); }
    void onUnlock(const QDBusMessage &message) { tellOf(message.path(), SessionEvent::isUnlocked); }

private:
    using Bus = std::optional<QDBusConnection>;

    void take(Bus SessionEvents::*bus, const QDBusConnection &opened);
    void follow();
    void attach(Bus SessionEvents::*bus, bool isToHear);
    void attachAll(bool isToHear);
    void askForOwnSession();
    void tellOf(const QString &session, SessionEvent event);
    void tell(SessionEvent event);

    bool m_isFollowing = false;
    Bus m_systemBus;
    Bus m_sessionBus;
    QString m_ownSession; ///< logind's path of it, empty while it is not known
    std::list<std::function<void(SessionEvent)>> m_listeners;
};

} // namespace tavrine
