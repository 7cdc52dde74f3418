#include "base/PrivateFiles.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {
namespace {

FileResult resultOf(int error) {
    return error == 0 ? FileResult() : FileResult::failure(error);
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

/// Replaces nothing.
FileResult renamed(const QByteArray &from, const QByteArray &to) {
    return FileResult::ofCall(::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE));
}

} // namespace

FileResult makePrivateFolder(const QString &path) {
    const QFileInfo info(path);
    if (info.isDir())
        return {};
    if (path.isEmpty())
        return FileResult::failure(ENOENT);
    if (info.exists())
        return FileResult::failure(EEXIST);
    if (const FileResult parent = makePrivateFolder(info.absolutePath()); !parent)
        return parent.error() == EEXIST ? FileResult::failure(ENOTDIR) : parent;
    const FileResult made = FileResult::ofCall(::mkdir(QFile::encodeName(path).constData(), S_IRWXU));
    return QFileInfo(path).isDir() ? FileResult() : made; // another program may have been quicker
}

FileResult claimPrivateFolder(const QString &path) {
    const FileResult result = makePrivateFolder(path);
    if (result)
        takeRightsOfOthers(path, S_IFDIR);
    return result;
}

void claimPrivateFile(const QString &path) {
    takeRightsOfOthers(path, S_IFREG);
}

FileResult writePrivateFile(const QString &path, const QByteArray &content) {
    PrivateFileWriter writer(path);
    (void)writer.write(content); // the commit tells
    return writer.commit();
}

PrivateFileWriter::PrivateFileWriter(const QString &path)
    : m_writer(QFile::encodeName(path).toStdString(), {.rights = FileRights::ownerOnly, .isDurable = true}) {}

FileResult PrivateFileWriter::write(const QByteArray &piece) {
    return resultOf(m_writer.write({piece.constData(), static_cast<size_t>(piece.size())}));
}

FileResult PrivateFileWriter::commit() {
    return resultOf(m_writer.commit());
}

std::optional<QString> setUnreadableFileAside(const QString &path, Date now) {
    const auto seconds = static_cast<qint64>(now.secondsSince1970);
    const QString name = path + QStringLiteral(".unreadable-") +
                         QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString(QStringLiteral("yyyyMMdd-HHmmss"));
    constexpr int mostTries = 1000;
    QString free = name;
    for (int i = 2; i <= mostTries; ++i) {
        const FileResult moved = renamed(QFile::encodeName(path), QFile::encodeName(free));
        if (moved)
            return free;
        if (moved.error() != EEXIST)
            break;
        free = name + QLatin1Char('-') + QString::number(i);
    }
    return std::nullopt;
}

} // namespace tavrine
