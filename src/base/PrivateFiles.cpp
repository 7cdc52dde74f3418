#include "base/PrivateFiles.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {
namespace {

bool writeAll(int file, const QByteArray &content) {
    qsizetype written = 0;
    while (written < content.size()) {
        const ssize_t n = ::write(file, content.constData() + written, static_cast<size_t>(content.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        written += n;
    }
    return true;
}

void syncFolder(const QByteArray &folder) {
    const int fd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    ::fsync(fd);
    ::close(fd);
}

/// Takes all rights of group and others from what is the person's own and of this type.
void takeRightsOfOthers(const QString &path, mode_t type) {
    const QByteArray name = QFile::encodeName(path);
    struct stat status {};
    if (::lstat(name.constData(), &status) != 0 || (status.st_mode & S_IFMT) != type || status.st_uid != ::geteuid())
        return;
    const mode_t mode = status.st_mode & 07777U;
    if ((mode & (S_IRWXG | S_IRWXO)) != 0)
        ::chmod(name.constData(), mode & ~static_cast<mode_t>(S_IRWXG | S_IRWXO));
}

} // namespace

bool makePrivateFolder(const QString &path) {
    const QFileInfo info(path);
    if (info.isDir())
        return true;
    if (path.isEmpty() || info.exists() || !makePrivateFolder(info.absolutePath()))
        return false;
    return ::mkdir(QFile::encodeName(path).constData(), S_IRWXU) == 0 || QFileInfo(path).isDir();
}

bool claimPrivateFolder(const QString &path) {
    if (!makePrivateFolder(path))
        return false;
    takeRightsOfOthers(path, S_IFDIR);
    return true;
}

void claimPrivateFile(const QString &path) {
    takeRightsOfOthers(path, S_IFREG);
}

bool writePrivateFile(const QString &path, const QByteArray &content) {
    // A link keeps its place: the file that it points to is the one that is replaced.
    const QFileInfo info(path);
    const QString target = info.isSymLink() ? info.symLinkTarget() : path;
    QByteArray temporary = QFile::encodeName(target) + ".XXXXXX";
    const int file = ::mkostemp(temporary.data(), O_CLOEXEC); // made with mode 0600
    if (file < 0)
        return false;
    const bool isWritten = writeAll(file, content) && ::fsync(file) == 0;
    ::close(file);
    if (!isWritten || ::rename(temporary.constData(), QFile::encodeName(target).constData()) != 0) {
        ::unlink(temporary.constData());
        return false;
    }
    syncFolder(QFile::encodeName(QFileInfo(target).absolutePath()));
    return true;
}

} // namespace tavrine
