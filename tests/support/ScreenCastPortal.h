#pragma once

#include "support/BusAnswer.h"
#include "support/Eventually.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>

namespace tavrine::test {

/// The portal of `screen-cast-portal`, in a process of its own. It shows by the PipeWire that is to be found when it
/// starts.
class ScreenCastPortal {
public:
    ScreenCastPortal()
        : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("cast-test"))) {
        m_process.setProcessChannelMode(QProcess::ForwardedChannels);
        m_process.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral(SCREEN_CAST_PORTAL)});
        static_cast<void>(
            eventually([this] { return m_bus.interface()->isServiceRegistered(name()); }, std::chrono::seconds(20)));
    }
    ~ScreenCastPortal() {
        m_process.kill();
        m_process.waitForFinished();
        static_cast<void>(eventually([this] { return !m_bus.interface()->isServiceRegistered(name()); }));
        QDBusConnection::disconnectFromBus(QStringLiteral("cast-test"));
    }
    ScreenCastPortal(const ScreenCastPortal &) = delete;
    ScreenCastPortal &operator=(const ScreenCastPortal &) = delete;

    struct State {
        uint sessions = 0;  ///< that were made
        uint questions = 0; ///< that the person saw
        uint open = 0;      ///< sessions
        QString token;      ///< that the last session was begun with
        uint closed = 0;    ///< requests, by who had made them, while they stood
    };
    [[nodiscard]] State state() const {
        const auto values = call("State").arguments();
        return {values.value(0).toUInt(), values.value(1).toUInt(), values.value(2).toUInt(),
                values.value(3).toString(), values.value(4).toUInt()};
    }
    QDBusMessage call(const char *method, const QVariantList &arguments = {}) const {
        auto message = QDBusMessage::createMethodCall(name(), QStringLiteral("/org/freedesktop/portal/desktop"),
                                                      QStringLiteral("test.Portal"), QLatin1String(method));
        message.setArguments(arguments);
        return test::answerOf(m_bus, message, std::chrono::seconds(20));
    }

private:
    static QString name() { return QStringLiteral("org.freedesktop.portal.Desktop"); }

    QDBusConnection m_bus;
    QProcess m_process;
};

} // namespace tavrine::test
