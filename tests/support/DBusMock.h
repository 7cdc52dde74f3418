#pragma once

#include "support/Eventually.h"
#include "support/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>

#include <csignal>

namespace tavrine::test {

/// A daemon that python-dbusmock plays by one of its templates, in a process of its own: it can hang, end and come
/// back. Our own connection to its bus waits for answers as the tested code never may.
class DBusMock {
public:
    enum class Bus { session, system };

    DBusMock(Bus bus, const QString &mockTemplate, const QString &name)
        : m_bus(bus), m_template(mockTemplate), m_name(name) {
        start();
    }
    ~DBusMock() { end(); }
    DBusMock(const DBusMock &) = delete;
    DBusMock &operator=(const DBusMock &) = delete;

    void hang() const { ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP); }
    void goOn() const { ::kill(static_cast<pid_t>(m_process.processId()), SIGCONT); }
    void end() {
        m_process.kill();
        m_process.waitForFinished();
    }
    void start() {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral("/usr/bin/python3"),
                        {QStringLiteral("-m"), QStringLiteral("dbusmock"),
                         m_bus == Bus::system ? QStringLiteral("--system") : QStringLiteral("--session"),
                         QStringLiteral("--template"), m_template});
        static_cast<void>(eventually([this] { return isOwned(); }));
    }

    /// The answer of a method of it.
    [[nodiscard]] QVariantList call(const QString &path, const QString &interface, const QString &method,
                                    const QVariantList &arguments = {}) const {
        auto message = QDBusMessage::createMethodCall(m_name, path, interface, method);
        message.setArguments(arguments);
        return connection().call(message).arguments();
    }

    /// Who watches from outside.
    [[nodiscard]] QDBusConnection connection() const {
        return QDBusConnection::connectToBus(
            m_bus == Bus::system ? QDBusConnection::SystemBus : QDBusConnection::SessionBus,
            m_bus == Bus::system ? QStringLiteral("test-system") : QStringLiteral("test-session"));
    }

private:
    [[nodiscard]] bool isOwned() const {
        auto message = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
        message << m_name;
        return connection().call(message).arguments().value(0).toBool();
    }

    Bus m_bus;
    QString m_template;
    QString m_name;
    QProcess m_process;
};

/// The system bus of this test program, for as long as it runs: made before anybody asks for the bus.
inline PrivateBus &privateSystemBus() {
    static PrivateBus bus;
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().toLocal8Bit());
    return bus;
}

} // namespace tavrine::test
