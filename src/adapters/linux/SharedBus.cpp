#include "adapters/linux/SharedBus.h"

#include <QCoreApplication>

#include <algorithm>
#include <thread>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto firstPause = 50ms; // a bus that restarts is there again within some tens of milliseconds

} // namespace

/// Lives on the main thread. Sees that the bus goes away.
class SharedBus::LossWatcher final : public QObject {
    Q_OBJECT

public:
    explicit LossWatcher(SharedBus &bus) : m_bus(bus) {}

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
    void onLoss() { m_bus.openAnew(); }

private:
    SharedBus &m_bus;
    QString m_watched; ///< the name of the connection
};

/// On the main thread: watches over the connection and hands it to who waited when it was opened.
void SharedBus::tell(const QDBusConnection &connection, bool wasOpened, const std::vector<Listener> &listeners) {
    if (!m_watcher)
        m_watcher = new LossWatcher(*this);
    if (wasOpened)
        m_watcher->watch(connection);
    for (const Listener &each : listeners)
        if (each.context)
            each.ready(connection);
}

/// On the opener's thread.
void SharedBus::publish(const QDBusConnection &connection, bool isLastTry) {
    const bool isOpened = connection.isConnected();
    std::vector<Listener> told;
    {
        const std::lock_guard lock(m_mutex);
        m_connection = connection;
        m_wasOpened = isOpened;
        m_isTrying = !isLastTry;
        told = m_listeners;
        std::erase_if(m_listeners, [](const Listener &each) { return !each.isFollower; });
    }
    m_isOpen.notify_all();
    // The application stands for the main thread.
    if (auto *const application = QCoreApplication::instance())
        QMetaObject::invokeMethod(
            application, [this, connection, isOpened, told] { tell(connection, isOpened, told); },
            Qt::QueuedConnection);
}

/// On the opener's thread. Tries until the bus is open; the first failure is told.
void SharedBus::tryToOpen(bool wasOpen) {
    bool isFailureTold = wasOpen;
    for (std::chrono::milliseconds pause = firstPause;; pause = std::min(2 * pause, m_traits.longestPause)) {
        const QString name = QLatin1String(m_traits.name) + QString::number(++m_number);
        const QDBusConnection connection = QDBusConnection::connectToBus(m_traits.type, name);
        const bool canCome = !m_traits.neededVariable || qEnvironmentVariableIsSet(m_traits.neededVariable);
        const bool isLastTry = connection.isConnected() || !canCome;
        if (isLastTry || !isFailureTold)
            publish(connection, isLastTry);
        if (isLastTry)
            return;
        isFailureTold = true;
        QDBusConnection::disconnectFromBus(name);
        std::this_thread::sleep_for(pause);
    }
}

void SharedBus::start(bool wasOpen) {
    if (!std::exchange(m_isTrying, true))
        std::thread([this, wasOpen] { tryToOpen(wasOpen); }).detach();
}

void SharedBus::openAnew() {
    const std::lock_guard lock(m_mutex);
    start(true);
}

void SharedBus::listen(const Listener &listener) {
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_listeners, [](const Listener &each) { return !each.context; });
    if (!m_connection)
        start(false);
    if (!m_connection || listener.isFollower)
        m_listeners.push_back(listener);
    if (m_connection)
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [this, listener, connection = *m_connection, wasOpened = m_wasOpened] {
                tell(connection, wasOpened, {listener});
            },
            Qt::QueuedConnection);
}

std::optional<QDBusConnection> SharedBus::open(std::chrono::milliseconds longest) {
    std::unique_lock lock(m_mutex);
    if (!m_connection)
        start(false);
    m_isOpen.wait_for(lock, longest, [this] { return m_connection.has_value(); });
    return m_connection;
}

} // namespace tavrine

#include "SharedBus.moc"
