#pragma once

#include <QDir>
#include <QFile>
#include <QList>

#include <sys/types.h>

namespace tavrine::test {

/// The recorder's processes that the process `parent` has started and that are not gone.
[[nodiscard]] inline QList<pid_t> recordersOf(qint64 parent) {
    QList<pid_t> found;
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(parent));
    for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile children(tasks.filePath(task + QStringLiteral("/children")));
        if (!children.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray &child : children.readAll().split(' ')) {
            QFile name(QStringLiteral("/proc/%1/comm").arg(child.toInt()));
            if (name.open(QIODevice::ReadOnly) && name.readAll().startsWith("TavrineRecorder"))
                found.append(child.toInt());
        }
    }
    return found;
}

} // namespace tavrine::test
