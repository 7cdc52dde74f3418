#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>

#include <chrono>
#include <functional>

namespace tavrine {

/// The way to the session bus for everyone in the process. Belongs to the main thread.
///
///  1. Opening a bus waits for its answer, so that is done on a thread of its own: a bus that hangs delays nobody.
///  2. A bus that goes away, or is not there yet, is opened as soon as one is there at its address, which is tried for
///     as long as the process lives.
///  3. QtDBus holds a lock of the whole process while it opens a bus. So nothing on the main thread may name a
///     connection (`QDBusConnection::sessionBus()` does); it works with the one that it is handed here.
namespace sessionBus {

/// Calls `ready` on the main thread in a later turn, as soon as the bus is open; a bus that is not there or cannot be
/// reached comes as a connection that is not connected. Not called when `context` is gone by then.
void whenOpen(QObject *context, std::function<void(QDBusConnection)> ready);

/// As `whenOpen`, and again each time that the bus was opened anew. Names, objects, matches and watchers of the bus
/// that went are gone with it.
void follow(QObject *context, std::function<void(QDBusConnection)> ready);

/// Waits for the bus for at most `longest`, for a process that has nothing else to do. None when it hangs; not
/// connected when there is none.
[[nodiscard]] std::optional<QDBusConnection> open(std::chrono::milliseconds longest);

/// Sends `call` and hands its reply to `answered` in a later turn, errors too. Not called when `context` is gone.
void ask(const QDBusConnection &bus, const QDBusMessage &call, QObject *context,
         std::function<void(const QDBusPendingCall &)> answered,
         std::chrono::milliseconds timeout = std::chrono::seconds(5));

} // namespace sessionBus
} // namespace tavrine
