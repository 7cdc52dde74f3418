#include "adapters/linux/StreamBus.h"

#include "base/Uuid.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QSocketNotifier>
#include <QTimer>

#include <optional>

namespace tavrine {

StreamBus::StreamBus(const Session &session)
    : m_session(session), m_name(QStringLiteral("stream-") + freshUuidString()),
      m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_name)) {}

StreamBus::~StreamBus() {
    QDBusConnection::disconnectFromBus(m_name);
}

bool StreamBus::waitUntil(const std::function<bool()> &isDone, Wait longest, int wake) const {
    QEventLoop events; // the first on a thread makes what the rest needs
    const QSocketNotifier stop(m_session.waker()->descriptor(), QSocketNotifier::Read);
    std::optional<QSocketNotifier> other;
    if (wake >= 0)
        other.emplace(wake, QSocketNotifier::Read);
    const QDeadlineTimer end(longest);
    QTimer alarm;
    alarm.setTimerType(Qt::PreciseTimer); // never before the end
    alarm.start(longest);
    while (!isDone()) {
        if (m_session.isOver() || end.hasExpired())
            return false;
        events.processEvents(QEventLoop::WaitForMoreEvents);
        m_session.waker()->clear(); // it is woken for more than the end
    }
    return true;
}

QDBusMessage StreamBus::ask(const QDBusMessage &call, Wait longest) {
    const QDBusPendingCallWatcher answer(m_bus.asyncCall(call, static_cast<int>(longest.count())));
    if (!waitUntil([&answer] { return answer.isFinished(); }, longest))
        return QDBusMessage::createError(QDBusError::NoReply, QStringLiteral("There is no answer."));
    return answer.reply();
}

} // namespace tavrine
