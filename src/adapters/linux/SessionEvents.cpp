#include "adapters/linux/SessionEvents.h"

#include "adapters/linux/SystemBus.h"

#include <QDBusArgument>
#include <QDBusObjectPath>

#include <algorithm>
#include <iterator>
#include <utility>

namespace tavrine {
namespace {

struct Notice {
    const char *interface;
    const char *name;
    const char *slot;
};

constexpr Notice ofLogind[] = {
    {"org.freedesktop.login1.Manager", "PrepareForSleep", SLOT(onSleep(bool))},
    {"org.freedesktop.login1.Session", "Lock", SLOT(onLock(QDBusMessage))},
    {"org.freedesktop.login1.Session", "Unlock", SLOT(onUnlock(QDBusMessage))},
};
// Desktops that lock without a word to logind.
constexpr Notice ofLockScreens[] = {
    {"org.freedesktop.ScreenSaver", "ActiveChanged", SLOT(onActive(bool))},
    {"org.gnome.ScreenSaver", "ActiveChanged", SLOT(onActive(bool))},
    {"org.cinnamon.ScreenSaver", "ActiveChanged", SLOT(onActive(bool))},
    {"org.mate.ScreenSaver", "ActiveChanged", SLOT(onActive(bool))},
    {"org.xfce.ScreenSaver", "ActiveChanged", SLOT(onActive(bool))},
};

/// A session as a property tells it, its number and its path; "/" stands for none.
QString pathOfPair(const QVariant &pair) {
    QString number;
    QDBusObjectPath path;
    if (pair.canConvert<QDBusArgument>()) {
        const auto argument = pair.value<QDBusArgument>();
        if (argument.currentSignature() == QLatin1String("(so)")) {
            argument.beginStructure();
            argument >> number >> path;
            argument.endStructure();
        }
    }
    return path.path() == QLatin1String("/") ? QString() : path.path();
}

} // namespace

SessionEvents::Listening SessionEvents::listen(std::function<void(SessionEvent)> handler) {
    if (!std::exchange(m_isFollowing, true))
        follow();
    const auto listener = m_listeners.insert(m_listeners.end(), std::move(handler));
    if (m_listeners.size() == 1)
        attachAll(true);
    return {this, [listener](SessionEvents *self) {
                self->m_listeners.erase(listener);
                if (self->m_listeners.empty())
                    self->attachAll(false);
            }};
}

void SessionEvents::follow() {
    systemBus::follow(this, [this](const QDBusConnection &bus) { take(&SessionEvents::m_systemBus, bus); });
    sessionBus::follow(this, [this](const QDBusConnection &bus) { take(&SessionEvents::m_sessionBus, bus); });
}

void SessionEvents::take(Bus SessionEvents::*bus, const QDBusConnection &opened) {
    if (!opened.isConnected())
        return;
    this->*bus = opened;
    if (!m_listeners.empty())
        attach(bus, true);
}

void SessionEvents::attachAll(bool isToHear) {
    attach(&SessionEvents::m_systemBus, isToHear);
    attach(&SessionEvents::m_sessionBus, isToHear);
}

void SessionEvents::attach(Bus SessionEvents::*bus, bool isToHear) {
    Bus &connection = this->*bus;
    if (!connection)
        return;
    const auto attachTo = [&](const Notice &notice) {
        const auto interface = QLatin1String(notice.interface);
        const auto name = QLatin1String(notice.name);
        // No service name: with one, QtDBus would wait for the bus to tell who has it. No path: each session has its
        // own.
        if (isToHear)
            connection->connect(QString(), QString(), interface, name, this, notice.slot);
        else
            connection->disconnect(QString(), QString(), interface, name, this, notice.slot);
    };
    if (bus == &SessionEvents::m_systemBus && isToHear)
        askForOwnSession();
    if (bus == &SessionEvents::m_systemBus)
        std::for_each(std::begin(ofLogind), std::end(ofLogind), attachTo);
    else
        std::for_each(std::begin(ofLockScreens), std::end(ofLockScreens), attachTo);
}

/// By the number that the session gave to its programs. One that was started beside it, by the person's own manager,
/// has none: it belongs to the session in which the person has a screen.
void SessionEvents::askForOwnSession() {
    const auto service = QStringLiteral("org.freedesktop.login1");
    const auto path = QStringLiteral("/org/freedesktop/login1");
    const QString number = qEnvironmentVariable("XDG_SESSION_ID");
    const bool hasNumber = !number.isEmpty();
    auto call = hasNumber ? QDBusMessage::createMethodCall(service, path, service + QStringLiteral(".Manager"),
                                                           QStringLiteral("GetSession"))
                          : QDBusMessage::createMethodCall(service, path + QStringLiteral("/user/self"),
                                                           QStringLiteral("org.freedesktop.DBus.Properties"),
                                                           QStringLiteral("Get"));
    call.setAutoStartService(false);
    if (hasNumber)
        call << number;
    else
        call << service + QStringLiteral(".User") << QStringLiteral("Display");
    systemBus::ask(*m_systemBus, call, this, [this, hasNumber](const QDBusPendingCall &reply) {
        const QVariant answer = reply.reply().arguments().value(0);
        if (reply.isError())
            m_ownSession.clear();
        else if (hasNumber)
            m_ownSession = answer.value<QDBusObjectPath>().path();
        else
            m_ownSession = pathOfPair(answer.value<QDBusVariant>().variant());
    });
}

void SessionEvents::tellOf(const QString &session, SessionEvent event) {
    if (m_ownSession.isEmpty() || session == m_ownSession)
        tell(event);
}

void SessionEvents::tell(SessionEvent event) {
    for (const auto &listener : m_listeners)
        listener(event);
}

} // namespace tavrine
