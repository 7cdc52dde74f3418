#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QMap>
#include <QVariantMap>

namespace tavrine::test {

/// The settings of a desktop portal, played on a connection of its own.
class SettingsPortal final : public QDBusVirtualObject {
public:
    SettingsPortal() : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("settings"))) {
        qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
    }
    ~SettingsPortal() override {
        leave();
        QDBusConnection::disconnectFromBus(QStringLiteral("settings"));
    }

    [[nodiscard]] bool appear() {
        m_bus.registerVirtualObject(path(), this);
        return m_bus.registerService(service());
    }
    void leave() {
        m_bus.unregisterService(service());
        m_bus.unregisterObject(path());
    }

    void set(const QString &group, const QString &key, const QVariant &value, bool isTold = true) {
        m_values[group][key] = value;
        auto signal = QDBusMessage::createSignal(path(), interface(), QStringLiteral("SettingChanged"));
        signal << group << key << QVariant::fromValue(QDBusVariant(value));
        if (isTold)
            m_bus.send(signal);
    }

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        ++questions;
        if (message.member() == QLatin1String("ReadAll"))
            return bus.send(message.createReply(QVariant::fromValue(m_values)));
        if (message.member() != QLatin1String("Read"))
            return false;
        const QVariant value =
            m_values.value(message.arguments().value(0).toString()).value(message.arguments().value(1).toString());
        if (!value.isValid())
            return bus.send(message.createErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no such key.")));
        // Wrapped once more than it says, as portals do.
        return bus.send(
            message.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(QDBusVariant(value))))));
    }

    int questions = 0;

private:
    static QString service() { return QStringLiteral("org.freedesktop.portal.Desktop"); }
    static QString path() { return QStringLiteral("/org/freedesktop/portal/desktop"); }
    static QString interface() { return QStringLiteral("org.freedesktop.portal.Settings"); }

    QDBusConnection m_bus;
    QMap<QString, QVariantMap> m_values;
};

} // namespace tavrine::test
