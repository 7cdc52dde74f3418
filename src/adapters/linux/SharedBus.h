#pragma once

#include <QDBusConnection>
#include <QPointer>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace tavrine {

/// One connection to a bus for everyone in the process, opened on a thread of its own and anew when it was lost. What
/// it promises stands where it is offered, in `SessionBus.h` and `SystemBus.h`. Never destroyed: the thread may still
/// wait for the bus when the process ends.
class SharedBus {
public:
    using Ready = std::function<void(QDBusConnection)>;

    struct Traits {
        QDBusConnection::BusType type;
        const char *name;                       ///< begins that of each connection
        const char *neededVariable;             ///< without it there is no such bus, now and later; null for none
        std::chrono::milliseconds longestPause; ///< between two tries
    };

    explicit SharedBus(const Traits &traits) : m_traits(traits) {}

    void whenOpen(QObject *context, Ready ready) { listen({context, std::move(ready), false}); }
    void follow(QObject *context, Ready ready) { listen({context, std::move(ready), true}); }
    [[nodiscard]] std::optional<QDBusConnection> open(std::chrono::milliseconds longest);

private:
    class LossWatcher;
    struct Listener {
        QPointer<QObject> context;
        Ready ready;
        bool isFollower = false;
    };

    void listen(const Listener &listener);
    void start(bool wasOpen);
    void openAnew();
    void tryToOpen(bool wasOpen);
    void publish(const QDBusConnection &connection, bool isLastTry);
    void tell(const QDBusConnection &connection, bool wasOpened, const std::vector<Listener> &listeners);

    const Traits m_traits;
    LossWatcher *m_watcher = nullptr; ///< of the main thread
    std::mutex m_mutex;
    std::condition_variable m_isOpen;
    std::optional<QDBusConnection> m_connection; ///< from the first answer on
    std::vector<Listener> m_listeners;           ///< of the main thread
    int m_number = 0;                            ///< of the connections made so far
    bool m_wasOpened = false;                    ///< that connection; it may be lost by now
    bool m_isTrying = false;                     ///< a thread is at it
};

} // namespace tavrine
