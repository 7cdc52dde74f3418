#include "adapters/linux/ScreenReaderBus.h"

#include "adapters/linux/BusValues.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

namespace tavrine {
namespace {

const auto service = QStringLiteral("org.a11y.Bus");
const auto path = QStringLiteral("/org/a11y/bus");
constexpr auto addressVariable = "AT_SPI_BUS_ADDRESS";

using Answer = std::function<void(const QDBusMessage &reply)>;

/// An error is an answer, too.
void ask(const QDBusConnection &bus, QDBusMessage call, QObject *context, const Answer &answer) {
    call.setAutoStartService(false);
    auto *const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [watcher, answer] {
        watcher->deleteLater();
        answer(watcher->reply());
    });
}

} // namespace

void screenReaderBus::find(QObject *context, std::function<void(const QDBusConnection &)> found,
                           std::function<void()> none) {
    const auto open = [found, none](const QString &address) {
        const QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("a11y"));
        bus.isConnected() ? found(bus) : none();
    };
    if (qEnvironmentVariableIsSet(addressVariable))
        return open(qEnvironmentVariable(addressVariable));
    const QDBusConnection session = QDBusConnection::sessionBus();
    if (!session.isConnected())
        return none();
    auto call = QDBusMessage::createMethodCall(service, path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                               QStringLiteral("GetAll"));
    call << QStringLiteral("org.a11y.Status");
    ask(session, call, context, [session, context, open, none](const QDBusMessage &status) {
        const auto values = busValue<QVariantMap>(status.arguments().value(0), busMap);
        if (!values.value(QStringLiteral("IsEnabled")).toBool() &&
            !values.value(QStringLiteral("ScreenReaderEnabled")).toBool())
            return none();
        ask(session, QDBusMessage::createMethodCall(service, path, service, QStringLiteral("GetAddress")), context,
            [open, none](const QDBusMessage &reply) {
                const QString address = reply.arguments().value(0).toString();
                reply.type() == QDBusMessage::ReplyMessage && !address.isEmpty() ? open(address) : none();
            });
    });
}

} // namespace tavrine
