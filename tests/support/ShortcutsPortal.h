#pragma once

#include "adapters/linux/SessionBus.h"
#include "support/BusAnswer.h"
#include "support/Eventually.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QMap>
#include <QProcess>

#include <csignal>
#include <optional>

namespace tavrine::testing {

/// The portal of `shortcuts-portal`, in a process of its own. What it is asked to do is done, and told to the program,
/// when a call returns: both have one connection.
class ShortcutsPortal {
public:
    ShortcutsPortal() : m_bus(sessionBus::open(std::chrono::seconds(10))) { start(); }
    ~ShortcutsPortal() { end(); }
    ShortcutsPortal(const ShortcutsPortal &) = delete;
    ShortcutsPortal &operator=(const ShortcutsPortal &) = delete;

    void start() {
        // The machine's own, if somebody has called it onto this bus.
        if (const QDBusReply<uint> other = m_bus->interface()->servicePid(name()); other.isValid())
            ::kill(static_cast<pid_t>(other.value()), SIGKILL);
        static_cast<void>(test::eventually([this] { return !m_bus->interface()->isServiceRegistered(name()); }));
        m_process.setProcessChannelMode(QProcess::ForwardedChannels);
        m_process.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral(SHORTCUTS_PORTAL)});
        static_cast<void>(test::eventually([this] { return m_bus->interface()->isServiceRegistered(name()); }));
    }
    void end() {
        m_process.kill();
        m_process.waitForFinished();
        static_cast<void>(test::eventually([this] { return !m_bus->interface()->isServiceRegistered(name()); }));
    }

    QDBusMessage call(const char *method, const QVariantList &arguments = {}) const {
        auto message = QDBusMessage::createMethodCall(name(), QStringLiteral("/org/freedesktop/portal/desktop"),
                                                      QStringLiteral("test.Portal"), QLatin1String(method));
        message.setArguments(arguments);
        QDBusMessage answer = test::answerOf(*m_bus, message);
        QCoreApplication::processEvents(); // what came before the answer stands in line
        return answer;
    }
    [[nodiscard]] int bindings() const { return call("State").arguments().value(0).toInt(); }
    [[nodiscard]] int openSessions() const { return call("State").arguments().value(1).toInt(); }
    [[nodiscard]] QMap<QString, QString> titles() const {
        return qdbus_cast<QMap<QString, QString>>(call("State").arguments().value(2));
    }

private:
    static QString name() { return QStringLiteral("org.freedesktop.portal.Desktop"); }

    std::optional<QDBusConnection> m_bus;
    QProcess m_process;
};

} // namespace tavrine::testing
