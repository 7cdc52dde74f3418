#include "adapters/linux/NoFeedUpdater.h"

#include "adapters/linux/SessionBus.h"
#include "base/Print.h"
#include "base/Program.h"

#include <QCoreApplication>

namespace tavrine {
namespace {

void print(const QString &title, const QString &text) {
    printLine(title + QStringLiteral(": ") + text);
}

void notify(const QString &title, const QString &text) {
    QObject *const mainThread = QCoreApplication::instance();
    sessionBus::whenOpen(mainThread, [title, text, mainThread](const QDBusConnection &bus) {
        if (!bus.isConnected()) {
            print(title, text);
            return;
        }
        constexpr int desktopsOwnTime = -1;
        const auto service = QStringLiteral("org.freedesktop.Notifications");
        auto call = QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/Notifications"), service,
                                                   QStringLiteral("Notify"));
        call << QStringLiteral("Tavrine") << 0U << QString(ownBundleIdentifier) << title << text << QStringList()
             << QVariantMap() << desktopsOwnTime;
        sessionBus::ask(bus, call, mainThread, [title, text](const QDBusPendingCall &reply) {
            if (reply.isError())
                print(title, text);
        });
    });
}

} // namespace

NoFeedUpdater::NoFeedUpdater(Tell tell) : m_tell(std::move(tell)) {}

NoFeedUpdater::Tell NoFeedUpdater::byDesktopNotification() {
    return notify;
}

void NoFeedUpdater::checkForUpdates() {
    m_tell(
        QStringLiteral("Tavrine"),
        QStringLiteral(
            "This copy of Tavrine does not look for updates by itself. New versions come the way it was installed."));
}

} // namespace tavrine
