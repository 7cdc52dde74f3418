#pragma once

#include <QProcess>
#include <QStringList>

#include <csignal>

namespace tavrine::testing {

/// An X server beside the test's own: what is opened from here on is opened on it. The test's toolkit stays where it
/// is, so that this one may be stopped and ended.
class PrivateScreen {
public:
    explicit PrivateScreen(const QStringList &options = {}, const QString &size = QStringLiteral("1280x800x24"))
        : m_before(qgetenv("DISPLAY")) {
        m_server.setStandardErrorFile(QProcess::nullDevice());
        m_server.start(QStringLiteral("Xvfb"),
                       QStringList{QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                                   QStringLiteral("0"), size, QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                                   QStringLiteral("-noreset")} +
                           options);
        m_server.waitForReadyRead(10'000);
        qputenv("DISPLAY", ":" + m_server.readLine().trimmed());
    }
    ~PrivateScreen() {
        qputenv("DISPLAY", m_before);
        end();
    }
    PrivateScreen(const PrivateScreen &) = delete;
    PrivateScreen &operator=(const PrivateScreen &) = delete;

    void hang() { ::kill(static_cast<pid_t>(m_server.processId()), SIGSTOP); }
    void goOn() { ::kill(static_cast<pid_t>(m_server.processId()), SIGCONT); }
    void end() {
        m_server.kill();
        m_server.waitForFinished();
    }

private:
    QByteArray m_before;
    QProcess m_server;
};

} // namespace tavrine::testing
