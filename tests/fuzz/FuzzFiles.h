#pragma once

#include "FuzzTarget.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace tavrine::fuzz {

/// What the toolkit's notices need, made at the first call.
inline void makeApplication() {
    static int count = 0;
    static const QCoreApplication application(count, nullptr);
}

/// A folder for what is read from files, in memory where the system has one there.
inline QString folder() {
    static const QTemporaryDir made(
        (QFileInfo(QStringLiteral("/dev/shm")).isWritable() ? QStringLiteral("/dev/shm") : QDir::tempPath()) +
        QStringLiteral("/fuzz-XXXXXX"));
    return made.path();
}

/// The path of a file of that name with these bytes.
inline QString fileWith(const QString &name, Bytes bytes) {
    const QString path = folder() + QLatin1Char('/') + name;
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) &&
            file.write(bytes.data(), static_cast<qint64>(bytes.size())) == static_cast<qint64>(bytes.size()));
    return path;
}

} // namespace tavrine::fuzz
