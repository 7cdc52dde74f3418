#pragma once

#include "ports/Folders.h"

#include <QByteArray>
#include <QDir>
#include <QStringList>
#include <QTemporaryDir>

#include <ctime>

namespace tavrine::test {

/// A person's home for one test, in a time zone that is not UTC: 12:00:00 UTC is 21:00:00 there.
class TestHome {
public:
    TestHome() {
        qputenv("TZ", "Asia/Tokyo");
        tzset();
    }

    [[nodiscard]] QString path() const { return m_folder.path(); }
    [[nodiscard]] QString filePath(const QString &name) const { return m_folder.filePath(name); }
    [[nodiscard]] Folders folders() const {
        return {.applicationSupport = filePath(QStringLiteral(".local/share")),
                .home = path(),
                .documents = filePath(QStringLiteral("Documents")),
                .temporary = filePath(QStringLiteral(".cache/Tavrine/tmp"))};
    }
    /// Their names, hidden ones too.
    [[nodiscard]] static QStringList filesIn(const QString &folder) {
        return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

private:
    QTemporaryDir m_folder;
};

} // namespace tavrine::test
