#pragma once

#include "support/PrivateBus.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>

namespace tavrine::test {

/// A PipeWire of the test's own and who links its nodes, which needs a session bus or ends at once. Until it goes,
/// whoever asks for one finds it and no other.
class PrivatePipeWire {
public:
    PrivatePipeWire() : m_before(qgetenv("XDG_RUNTIME_DIR")) {
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder.path()));
        start(m_server, QStringLiteral("pipewire"));
        for (int i = 0; i < 2000 && !QFile::exists(socket()); ++i)
            QThread::msleep(5);
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), m_bus.address());
        m_manager.setProcessEnvironment(environment);
        start(m_manager, QStringLiteral("wireplumber"));
    }
    ~PrivatePipeWire() {
        end();
        qputenv("XDG_RUNTIME_DIR", m_before);
    }
    PrivatePipeWire(const PrivatePipeWire &) = delete;
    PrivatePipeWire &operator=(const PrivatePipeWire &) = delete;

    [[nodiscard]] bool isThere() const { return m_server.state() == QProcess::Running && QFile::exists(socket()); }
    void hang() const { ::kill(static_cast<pid_t>(m_server.processId()), SIGSTOP); }
    void end() {
        for (QProcess *each : {&m_manager, &m_server}) {
            each->kill(); // also of one that hangs
            each->waitForFinished();
        }
    }

private:
    [[nodiscard]] QString socket() const { return m_folder.filePath(QStringLiteral("pipewire-0")); }
    static void start(QProcess &process, const QString &program) {
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        process.start(program, QStringList());
        process.waitForStarted();
    }

    const PrivateBus m_bus;
    const QByteArray m_before;
    QTemporaryDir m_folder;
    QProcess m_server;
    QProcess m_manager;
};

} // namespace tavrine::test
