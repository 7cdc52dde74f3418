#pragma once

#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavrine::test {

/// A program of a few lines of shell in the worker's place.
class FakeWorker {
public:
    explicit FakeWorker(const char *lines) {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/bash\n");
        file.write(lines);
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    [[nodiscard]] QString path() const { return file("worker"); }
    /// A file beside the worker; in its lines "$(dirname $0)/name".
    [[nodiscard]] QString file(const char *name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    [[nodiscard]] QByteArray contents(const char *name) const {
        QFile wanted(file(name));
        return wanted.open(QIODevice::ReadOnly) ? wanted.readAll() : QByteArray();
    }

private:
    QTemporaryDir m_folder;
};

} // namespace tavrine::test
