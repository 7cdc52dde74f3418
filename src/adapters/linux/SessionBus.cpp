#include "adapters/linux/SessionBus.h"

#include <QCoreApplication>
#include <QDBusPendingCallWatcher>
#include <QPointer>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace tavrine::sessionBus {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Ready = std::function<void(QDBusConnection)>;

constexpr auto firstPause = 50ms; // a bus that restarts is there again within some tens of milliseconds
constexpr auto longestPause = 5s;

struct Listener {
    QPointer<QObject> context;
    Ready ready;
    bool isFollower = false;
};

/// The bus of the moment, and who wants it.
struct Bus {
    std::mutex mutex;
    std::condition_variable isOpen;
    std::optional<QDBusConnection> connection; ///< from the first answer on
    std::vector<Listener> listeners;           ///< of the main thread
    int number = 0;                            ///< of the connections made so far
    bool wasOpened = false;                    ///< that connection; it may be lost by now
    bool isTrying = false;                     ///< a thread is at it
};

// Never destroyed: the thread may still wait for the bus when the process ends.
Bus &theBus() {
    static auto *const shared = new Bus;
    return *shared;
}

void openAnew(Bus &bus);

/// Lives on the main thread. Sees that the bus goes away.
class LossWatcher final : public QObject {
    Q_OBJECT

public:
    void watch(QDBusConnection connection) {
        if (connection.name() == std::exchange(m_watched, connection.name()))
            return;
        connection.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                           QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                           SLOT(onLoss()));
        if (!connection.isConnected()) // it went before anybody watched
            onLoss();
    }

private Q_SLOTS:
    void onLoss() { openAnew(theBus()); }

private:
    QString m_watched; ///< the name of the connection
};

/// On the main thread: watches over the connection and hands it to who waited when it was opened.
void tell(const QDBusConnection &connection, bool wasOpened, const std::vector<Listener> &listeners) {
    static auto *const watcher = new LossWatcher;
    if (wasOpened)
        watcher->watch(connection);
    for (const Listener &each : listeners)
        if (each.context)
            each.ready(connection);
}

/// On the opener's thread.
void publish(Bus &bus, const QDBusConnection &connection, bool isLastTry) {
    const bool isOpened = connection.isConnected();
    std::vector<Listener> told;
    {
        const std::lock_guard lock(bus.mutex);
        bus.connection = connection;
        bus.wasOpened = isOpened;
        bus.isTrying = !isLastTry;
        told = bus.listeners;
        std::erase_if(bus.listeners, [](const Listener &each) { return !each.isFollower; });
    }
    bus.isOpen.notify_all();
    // The application stands for the main thread.
    if (auto *const application = QCoreApplication::instance())
        QMetaObject::invokeMethod(
            application, [connection, isOpened, told] { tell(connection, isOpened, told); }, Qt::QueuedConnection);
}

/// Tries until the bus is open. The first failure is told; without an address there is nothing to try again.
void open(Bus &bus, bool wasOpen) {
    bool isFailureTold = wasOpen;
    for (Clock::duration pause = firstPause;; pause = std::min<Clock::duration>(2 * pause, longestPause)) {
        const QString name = QStringLiteral("tavrine-session-bus-%1").arg(++bus.number);
        const QDBusConnection connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
        const bool isLastTry = connection.isConnected() || !qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS");
        if (isLastTry || !isFailureTold)
            publish(bus, connection, isLastTry);
        if (isLastTry)
            return;
        isFailureTold = true;
        QDBusConnection::disconnectFromBus(name);
        std::this_thread::sleep_for(pause);
    }
}

void start(Bus &bus, bool wasOpen) {
    if (!std::exchange(bus.isTrying, true))
        std::thread([&bus, wasOpen] { open(bus, wasOpen); }).detach();
}

void openAnew(Bus &bus) {
    const std::lock_guard lock(bus.mutex);
    start(bus, true);
}

void listen(const Listener &listener) {
    Bus &bus = theBus();
    const std::lock_guard lock(bus.mutex);
    std::erase_if(bus.listeners, [](const Listener &each) { return !each.context; });
    if (!bus.connection)
        start(bus, false);
    if (!bus.connection || listener.isFollower)
        bus.listeners.push_back(listener);
    if (bus.connection)
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [listener, connection = *bus.connection, wasOpened = bus.wasOpened] {
                tell(connection, wasOpened, {listener});
            },
            Qt::QueuedConnection);
}

} // namespace

void whenOpen(QObject *context, Ready ready) {
    listen({context, std::move(ready), false});
}

void follow(QObject *context, Ready ready) {
    listen({context, std::move(ready), true});
}

std::optional<QDBusConnection> open(std::chrono::milliseconds longest) {
    Bus &bus = theBus();
    std::unique_lock lock(bus.mutex);
    if (!bus.connection)
        start(bus, false);
    bus.isOpen.wait_for(lock, longest, [&bus] { return bus.connection.has_value(); });
    return bus.connection;
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

#include "SessionBus.moc"
