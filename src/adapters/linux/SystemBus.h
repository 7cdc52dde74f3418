#pragma once

#include "adapters/linux/SessionBus.h"

namespace tavrine {

/// The way to the system bus for everyone in the process. Belongs to the main thread, and keeps the rules of
/// `SessionBus.h`. Where there never was such a bus it is looked for once a minute; one that was lost, in its first
/// seconds many times more.
namespace systemBus {

/// As those of the session bus.
void whenOpen(QObject *context, std::function<void(QDBusConnection)> ready);
void follow(QObject *context, std::function<void(QDBusConnection)> ready);
using sessionBus::ask;

} // namespace systemBus
} // namespace tavrine
