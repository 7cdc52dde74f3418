#pragma once

#include <QProcess>
#include <QStringList>
#include <QThread>

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
        : m_before(qgetenv("DISPLAY")), m_kind(kind) {
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
        // A window manager that is busy takes its frame away later, and may put it above all others before that.
        for (int i = 0; m_kind == Kind::inAWindow && i < 500 && hasManagedWindows(); ++i)
            QThread::msleep(20);
    }

private:
    [[nodiscard]] bool hasManagedWindows() const {
        QProcess xprop;
        xprop.start(QStringLiteral("xprop"),
                    {QStringLiteral("-display"), QString::fromLatin1(m_before), QStringLiteral("-root"),
                     QStringLiteral("_NET_CLIENT_LIST")});
        return xprop.waitForFinished(10'000) && xprop.readAll().contains("0x");
    }

    QByteArray m_before;
    Kind m_kind;
    QProcess m_server;
};

} // namespace tavrine::testing
