#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>

#include <chrono>
#include <functional>

namespace tavrine {

/// The way to the session bus for everyone in the process. Belongs to the main thread.
///
/// Opening a bus waits for its answer, so that is done on a thread of its own, once: a bus that hangs delays nobody.
namespace sessionBus {

/// Calls `ready` on the main thread in a later turn, as soon as the bus is open; a bus that is not there or cannot be
/// reached comes as a connection that is not connected. Not called when `context` is gone by then.
void whenOpen(QObject *context, std::function<void(QDBusConnection)> ready);

/// Waits for the bus for at most `longest`. Not connected when there is none by then.
[[nodiscard]] QDBusConnection open(std::chrono::milliseconds longest);

/// Sends `call` and hands its reply to `answered` in a later turn, errors too. Not called when `context` is gone.
void ask(const QDBusConnection &bus, const QDBusMessage &call, QObject *context,
         std::function<void(const QDBusPendingCall &)> answered,
         std::chrono::milliseconds timeout = std::chrono::seconds(5));

} // namespace sessionBus
} // namespace tavrine
