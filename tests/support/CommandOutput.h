#pragma once

#include <QProcess>
#include <QStringList>

namespace tavrine::testing {

/// What a program of the system says; nothing where it takes longer than ten seconds.
inline QByteArray outputOf(const QString &command, const QStringList &arguments) {
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(command, arguments);
    return process.waitForFinished(10'000) ? process.readAllStandardOutput() : QByteArray();
}

} // namespace tavrine::testing
