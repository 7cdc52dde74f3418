#pragma once

#include <QProcess>
#include <QStringList>

#include <csignal>

namespace tavrine::testing {

/// An X server beside the test's own: what is opened from here on is opened on it. The test's toolkit stays where it
/// is, so that this one may be stopped and ended.
class PrivateScreen {
public:
    /// Within a window of the test's own display: its screen can be turned.
    enum class Kind { onItsOwn, inAWindow };

    explicit PrivateScreen(const QStringList &options = {}, const QString &size = QStringLiteral("1280x800x24"),
                           Kind kind = Kind::onItsOwn)
        : m_before(qgetenv("DISPLAY")) {
        QStringList arguments{QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen")};
        if (kind == Kind::onItsOwn)
            arguments << QStringLiteral("0");
        arguments << size << QStringLiteral("-nolisten") << QStringLiteral("tcp") << QStringLiteral("-noreset");
        m_server.setStandardErrorFile(QProcess::nullDevice());
        m_server.start(kind == Kind::onItsOwn ? QStringLiteral("Xvfb") : QStringLiteral("Xephyr"), arguments + options);
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
