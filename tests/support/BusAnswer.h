#pragma once

#include "support/Eventually.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>

namespace tavrine::test {

/// What another process answers, with the event loop running; an error when it does not in time. The toolkit's own call
/// that does so waits for ever for an answer that comes as the wait begins.
inline QDBusMessage answerOf(const QDBusConnection &bus, const QDBusMessage &question,
                             std::chrono::milliseconds longest = std::chrono::seconds(10)) {
    const QDBusPendingCall call = bus.asyncCall(question, static_cast<int>(longest.count()));
    static_cast<void>(eventually([&call] { return call.isFinished(); }, 2 * longest));
    return call.isFinished() ? call.reply()
                             : QDBusMessage::createError(QDBusError::NoReply, QStringLiteral("nobody answered"));
}

} // namespace tavrine::test
