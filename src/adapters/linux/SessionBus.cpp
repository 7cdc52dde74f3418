#include "adapters/linux/SessionBus.h"

#include "adapters/linux/SharedBus.h"

#include <QDBusPendingCallWatcher>

namespace tavrine::sessionBus {
namespace {

SharedBus &theBus() {
    static auto *const shared = new SharedBus({.type = QDBusConnection::SessionBus,
                                               .name = "tavrine-session-bus-",
                                               .neededVariable = "DBUS_SESSION_BUS_ADDRESS",
                                               .longestPause = std::chrono::seconds(5)});
    return *shared;
}

} // namespace

void whenOpen(QObject *context, std::function<void(QDBusConnection)> ready) {
    theBus().whenOpen(context, std::move(ready));
}

void follow(QObject *context, std::function<void(QDBusConnection)> ready) {
    theBus().follow(context, std::move(ready));
}

std::optional<QDBusConnection> open(std::chrono::milliseconds longest) {
    return theBus().open(longest);
}

void ask(const QDBusConnection &bus, const QDBusMessage &call, QObject *context,
         std::function<void(const QDBusPendingCall &)> answered, std::chrono::milliseconds timeout) {
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, static_cast<int>(timeout.count())), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [answered = std::move(answered)](QDBusPendingCallWatcher *finished) {
                         finished->deleteLater();
                         answered(*finished);
                     });
}

} // namespace tavrine::sessionBus
