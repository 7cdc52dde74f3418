#include "adapters/linux/SessionBus.h"

#include <QCoreApplication>
#include <QDBusPendingCallWatcher>
#include <QPointer>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace tavrine::sessionBus {
namespace {

const auto nowhere = QStringLiteral("tavrine-no-bus"); // names a connection that is never made

struct Opening {
    using Waiting = std::function<void()>;

    std::mutex mutex;
    std::condition_variable isOpen;
    std::vector<Waiting> waiting;
    bool isStarted = false;
    bool isDone = false;
};

// Never destroyed: the thread may still wait for the bus when the process ends.
Opening &opening() {
    static auto *const shared = new Opening;
    return *shared;
}

void start(Opening &shared) {
    if (std::exchange(shared.isStarted, true))
        return;
    std::thread([&shared] {
        static_cast<void>(QDBusConnection::sessionBus()); // kept by QtDBus; later calls answer at once
        std::vector<Opening::Waiting> waiting;
        {
            const std::lock_guard lock(shared.mutex);
            shared.isDone = true;
            waiting.swap(shared.waiting);
        }
        shared.isOpen.notify_all();
        for (const auto &wake : waiting)
            wake();
    }).detach();
}

} // namespace

void whenOpen(QObject *context, std::function<void(QDBusConnection)> ready) {
    // The application stands for the main thread; the context may be gone while the bus is being opened.
    const auto wake = [guard = QPointer<QObject>(context), ready = std::move(ready)] {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [guard, ready] {
                if (guard)
                    ready(QDBusConnection::sessionBus());
            },
            Qt::QueuedConnection);
    };
    Opening &shared = opening();
    {
        const std::lock_guard lock(shared.mutex);
        start(shared);
        if (!shared.isDone) {
            shared.waiting.emplace_back(wake);
            return;
        }
    }
    wake();
}

QDBusConnection open(std::chrono::milliseconds longest) {
    Opening &shared = opening();
    std::unique_lock lock(shared.mutex);
    start(shared);
    if (!shared.isOpen.wait_for(lock, longest, [&shared] { return shared.isDone; }))
        return QDBusConnection(nowhere);
    return QDBusConnection::sessionBus();
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
