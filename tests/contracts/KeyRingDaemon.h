#pragma once

#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <csignal>

namespace tavrine::test {

/// A session bus that starts no service by itself. It is not there at first, and may end and come back at its address.
class EmptyBus {
public:
    EmptyBus() {
        QFile configuration(m_folder.filePath(QStringLiteral("bus.conf")));
        if (!configuration.open(QIODevice::WriteOnly))
            return;
        configuration.write("<busconfig><type>session</type><listen>" + address().toUtf8() +
                            "</listen><policy context='default'><allow send_destination='*' eavesdrop='true'/>"
                            "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>");
    }
    ~EmptyBus() { end(); }
    EmptyBus(const EmptyBus &) = delete;
    EmptyBus &operator=(const EmptyBus &) = delete;

    [[nodiscard]] QString address() const { return QStringLiteral("unix:path=") + path(); }
    /// Whether it listens now.
    [[nodiscard]] bool start() {
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--nofork"), QStringLiteral("--nopidfile"), QStringLiteral("--print-address"),
                        QStringLiteral("--config-file=") + m_folder.filePath(QStringLiteral("bus.conf"))});
        return m_daemon.waitForReadyRead(10'000); // it listens when it prints its address
    }
    void end() {
        m_daemon.kill();
        m_daemon.waitForFinished();
        QFile::remove(path());
    }

private:
    [[nodiscard]] QString path() const { return m_folder.filePath(QStringLiteral("bus")); }

    QTemporaryDir m_folder;
    QProcess m_daemon;
};

/// A GNOME key ring with a home of its own, on the bus of this process.
class KeyRingDaemon {
public:
    ~KeyRingDaemon() { end(); }

    /// Unlocked as by a login, or locked. It is not on the bus at once.
    void start(bool isUnlocked) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *variable : {"HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
            environment.insert(QLatin1String(variable), m_home.path());
        m_daemon.setProcessEnvironment(environment);
        m_daemon.setProcessChannelMode(QProcess::MergedChannels);
        QStringList arguments{QStringLiteral("--foreground"), QStringLiteral("--components=secrets"),
                              QStringLiteral("--control-directory=") + m_home.path()};
        if (isUnlocked)
            arguments.append(QStringLiteral("--unlock"));
        m_daemon.start(QStringLiteral("gnome-keyring-daemon"), arguments);
        m_daemon.write("the password");
        m_daemon.closeWriteChannel();
    }
    void end() {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    void hold() { ::kill(pid_t(m_daemon.processId()), SIGSTOP); }
    [[nodiscard]] QByteArray output() { return m_daemon.readAll(); }

private:
    QTemporaryDir m_home;
    QProcess m_daemon;
};

} // namespace tavrine::test
