#pragma once

#include <QProcess>

namespace tavrine::test {

/// A program that is started for a test and ended with it.
class Program {
public:
    Program(const QString &command, const QStringList &arguments) {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(command, arguments);
        m_process.waitForStarted();
    }
    ~Program() { end(); }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    [[nodiscard]] qint64 processIdentifier() const { return m_process.processId(); }

    /// Ends it as a crash does.
    void end() {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
};

/// Runs a command to its end and gives its standard output.
[[nodiscard]] inline QString outputOf(const QString &command, const QStringList &arguments) {
    QProcess process;
    process.start(command, arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

} // namespace tavrine::test
