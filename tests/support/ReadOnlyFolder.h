#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {

/// While it lives, the process may read `folder` and what is in it, and write nothing there. The superuser, whom no
/// mode stops, becomes nobody for that time.
class ReadOnlyFolder {
public:
    explicit ReadOnlyFolder(const QString &folder) : m_folder(QFile::encodeName(folder)) {
        // Everything above it may be passed, as far as it is ours.
        for (QDir dir(folder); dir.path().startsWith(QDir::tempPath()) && dir.path() != QDir::tempPath();
             dir.setPath(QFileInfo(dir.path()).path()))
            ::chmod(QFile::encodeName(dir.path()).constData(), 0755);
        ::chmod(m_folder.constData(), 0555);
        constexpr uid_t nobody = 65534;
        m_isSuperuser = ::geteuid() == 0;
        if (m_isSuperuser && ::seteuid(nobody) != 0)
            std::abort();
    }
    ~ReadOnlyFolder() {
        if (m_isSuperuser && ::seteuid(0) != 0)
            std::abort();
        ::chmod(m_folder.constData(), 0700);
    }
    ReadOnlyFolder(const ReadOnlyFolder &) = delete;
    ReadOnlyFolder &operator=(const ReadOnlyFolder &) = delete;

private:
    QByteArray m_folder;
    bool m_isSuperuser = false;
};

} // namespace tavrine
