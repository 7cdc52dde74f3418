#include "adapters/linux/SystemBus.h"

#include "adapters/linux/SharedBus.h"

namespace tavrine::systemBus {
namespace {

SharedBus &theBus() {
    static auto *const shared = new SharedBus({.type = QDBusConnection::SystemBus,
                                               .name = "tavrine-system-bus-",
                                               .neededVariable = nullptr,
                                               .longestPause = std::chrono::minutes(1)});
    return *shared;
}

} // namespace

void whenOpen(QObject *context, std::function<void(QDBusConnection)> ready) {
    theBus().whenOpen(context, std::move(ready));
}

void follow(QObject *context, std::function<void(QDBusConnection)> ready) {
    theBus().follow(context, std::move(ready));
}

} // namespace tavrine::systemBus
