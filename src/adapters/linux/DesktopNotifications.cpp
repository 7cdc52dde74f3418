#include "adapters/linux/DesktopNotifications.h"

#include "adapters/linux/SessionBus.h"
#include "base/DesktopWords.h"
#include "base/Program.h"

#include <QStringList>
#include <QVariantMap>

#include <utility>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

const auto service = QStringLiteral("org.freedesktop.Notifications");
constexpr auto longestNotification = 24h; // nobody waits meanwhile

const auto path = QStringLiteral("/org/freedesktop/Notifications");

QDBusMessage callOf(const QString &method) {
    return QDBusMessage::createMethodCall(service, path, service, method);
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
            longestNotification);
    });
}

void DesktopNotifications::add(const UserNotification &notification, std::function<void()> pressed) {
    sessionBus::whenOpen(this, [this, notification, pressed = std::move(pressed)](const QDBusConnection &bus) {
        if (bus.isConnected())
            show(bus, notification, pressed);
    });
}

void DesktopNotifications::show(QDBusConnection bus, const UserNotification &notification,
                                const std::function<void()> &pressed) {
    constexpr int desktopsOwnTime = -1;
    const Shown before = m_shown.value(notification.identifier);
    const uint replaced = before.server == m_server ? before.number : 0;
    QStringList actions;
    if (pressed) {
        // A press on the message itself, which some servers do not know, and a button.
        actions = {QStringLiteral("default"), inDesktopWords(QStringLiteral("Open")), QStringLiteral("open"), inDesktopWords(QStringLiteral("Open"))};
        if (std::exchange(m_heardOn, bus.name()) != bus.name())
            bus.connect(QString(), path, service, QStringLiteral("ActionInvoked"), this,
                        SLOT(onActionInvoked(QDBusMessage)));
    }
    auto call = callOf(QStringLiteral("Notify"));
    call << QStringLiteral("Tavrine") << replaced << QString(ownBundleIdentifier) << inDesktopWords(notification.title)
         << inDesktopWords(notification.body) << actions << QVariantMap() << desktopsOwnTime;
    sessionBus::ask(
        bus, call, this,
        [this, identifier = notification.identifier, pressed](const QDBusPendingCall &reply) {
            if (!reply.isError())
                m_shown[identifier] = {reply.reply().service(), reply.reply().arguments().value(0).toUInt(), pressed};
        },
        longestNotification);
}

/// Of anybody's message, and maybe by anybody: only the server that shows ours counts, and its number of ours.
void DesktopNotifications::onActionInvoked(const QDBusMessage &signal) {
    for (const Shown &shown : std::as_const(m_shown)) {
        if (shown.pressed && shown.server == signal.service() && shown.number == signal.arguments().value(0).toUInt()) {
            const auto pressed = shown.pressed; // it may show the next one
            pressed();
            return;
        }
    }
}

} // namespace tavrine
