#pragma once

#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <csignal>

namespace tavrine::test {

/// A session bus of the test's own, which can hang, end and come back at its address.
class PrivateBus {
public:
    PrivateBus() { start(); }
    /// Starts programs by the service files in `folder`/dbus-1/services.
    explicit PrivateBus(const QString &folder) {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_DATA_HOME"), folder);
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address());
        m_daemon.setProcessEnvironment(environment);
        start();
    }
    ~PrivateBus() { end(); }
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    [[nodiscard]] QString address() const { return QStringLiteral("unix:path=") + path(); }
    [[nodiscard]] bool isRunning() const { return m_daemon.state() == QProcess::Running && QFile::exists(path()); }

    void hang() const { ::kill(static_cast<pid_t>(m_daemon.processId()), SIGSTOP); }
    void goOn() const { ::kill(static_cast<pid_t>(m_daemon.processId()), SIGCONT); }
    void end() {
        m_daemon.kill(); // also of one that hangs
        m_daemon.waitForFinished();
        QFile::remove(path());
    }
    void start() {
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                        QStringLiteral("--print-address"), QStringLiteral("--address=") + address()});
        m_daemon.waitForReadyRead(10'000); // it listens when it prints its address
    }

private:
    [[nodiscard]] QString path() const { return m_folder.filePath(QStringLiteral("bus")); }

    QTemporaryDir m_folder;
    QProcess m_daemon;
};

} // namespace tavrine::test
