#pragma once

#include <QDir>
#include <QFile>

namespace tavrine {

/// Whether the pasteboard's reader, the one thread of its name, sleeps until somebody wakes it. With anything to be
/// fetched or served it sleeps until a deadline. The system tells in what call a thread sleeps, and with what
/// arguments.
[[nodiscard]] inline bool isReaderAtRest() {
    const QDir tasks(QStringLiteral("/proc/self/task"));
    for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name(tasks.filePath(task + QStringLiteral("/comm")));
        QFile call(tasks.filePath(task + QStringLiteral("/syscall")));
        if (!name.open(QIODevice::ReadOnly) || name.readAll().trimmed() != "pasteboard")
            continue;
        // Two descriptors and no timeout: poll(…, 2, -1), or ppoll(…, 2, null) where there is no other.
        const QList<QByteArray> words =
            call.open(QIODevice::ReadOnly) ? call.readAll().split(' ') : QList<QByteArray>();
        return words.value(2) == "0x2" && (words.value(3) == "0xffffffff" || words.value(3) == "0x0");
    }
    return false;
}

} // namespace tavrine
