#include "adapters/linux/PortalSettings.h"

#include "adapters/linux/PortalRequest.h"

#include <QDBusVariant>
#include <QMetaType>

namespace tavrine::portalSettings {
namespace {

constexpr int mostWrappings = 4;
const auto interface = QStringLiteral("org.freedesktop.portal.Settings");

} // namespace

QDBusMessage question(const QString &method) {
    QDBusMessage message = PortalRequest::message(interface, method);
    message.setAutoStartService(false);
    return message;
}

void followChanges(QDBusConnection bus, QObject *receiver, const char *slot) {
    // QtDBus knows the types of a slot by their names, and refuses one of which it has not heard yet.
    qRegisterMetaType<QDBusVariant>();
    // No service name: with one, QtDBus would wait for the bus to tell who has it.
    bus.connect(QString(), PortalRequest::path, interface, QStringLiteral("SettingChanged"), receiver, slot);
}

QVariant unwrapped(QVariant value) {
    for (int i = 0; i < mostWrappings && value.userType() == qMetaTypeId<QDBusVariant>(); ++i)
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace tavrine::portalSettings
