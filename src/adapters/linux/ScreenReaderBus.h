#pragma once

#include <QDBusConnection>
#include <QObject>

#include <functional>

namespace tavrine {

/// The way to the accessibility bus for a program that has nothing else to do.
///
///  1. Nothing is started for it: without a screen reader, and without its bus, there is none.
///  2. Who hangs there is waited for; nothing else waits meanwhile.
namespace screenReaderBus {

/// Calls `found` in a later turn with the bus, or `none` where nobody listens. Not called when `context` is gone.
void find(QObject *context, std::function<void(const QDBusConnection &)> found, std::function<void()> none);

} // namespace screenReaderBus
} // namespace tavrine
