#include "adapters/linux/DesktopNotifications.h"

#include "adapters/linux/SessionBus.h"
#include "base/DesktopWords.h"
#include "base/Program.h"

#include <QDBusMessage>
#include <QVariantMap>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

const auto service = QStringLiteral("org.freedesktop.Notifications");
constexpr auto longestAnswer = 24h; // nobody waits meanwhile

QDBusMessage callOf(const QString &method) {
    return QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/Notifications"), service, method);
}

} // namespace

void DesktopNotifications::requestAuthorization(std::function<void(bool isGranted)> answered) {
    sessionBus::whenOpen(this, [this, answered = std::move(answered)](const QDBusConnection &bus) {
        if (!bus.isConnected()) {
            answered(false);
            return;
        }
        sessionBus::ask(
            bus, callOf(QStringLiteral("GetCapabilities")), this,
            [this, answered](const QDBusPendingCall &reply) {
                m_server = reply.reply().service();
                answered(!reply.isError());
            },
            longestAnswer);
    });
}

void DesktopNotifications::add(const UserNotification &notification) {
    sessionBus::whenOpen(this, [this, notification](const QDBusConnection &bus) {
        if (bus.isConnected())
            show(bus, notification);
    });
}

void DesktopNotifications::show(const QDBusConnection &bus, const UserNotification &notification) {
    constexpr int desktopsOwnTime = -1;
    const Shown before = m_shown.value(notification.identifier);
    const uint replaced = before.server == m_server ? before.number : 0;
    auto call = callOf(QStringLiteral("Notify"));
    call << QStringLiteral("Tavrine") << replaced << QString(ownBundleIdentifier) << inDesktopWords(notification.title)
         << inDesktopWords(notification.body) << QStringList() << QVariantMap() << desktopsOwnTime;
    sessionBus::ask(
        bus, call, this,
        [this, identifier = notification.identifier](const QDBusPendingCall &reply) {
            if (!reply.isError())
                m_shown[identifier] = {reply.reply().service(), reply.reply().arguments().value(0).toUInt()};
        },
        longestAnswer);
}

} // namespace tavrine
