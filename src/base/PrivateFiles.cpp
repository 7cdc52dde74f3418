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

constexpr mode_t privateMode = S_IRUSR | S_IWUSR;

void syncFolder(const QByteArray &folder) {
    const int fd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    ::fsync(fd);
    ::close(fd);
}

QByteArray folderOf(const QByteArray &path) {
    return QFile::encodeName(QFileInfo(QFile::decodeName(path)).absolutePath());
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

FileResult renamed(const QByteArray &from, const QByteArray &to, unsigned flags = 0) {
    return FileResult::ofCall(::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), flags));
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

PrivateFileWriter::PrivateFileWriter(const QString &path) {
    const QFileInfo info(path);
    m_target = QFile::encodeName(info.isSymLink() ? info.symLinkTarget() : path);
    m_unfinished = m_target + ".unfinished";
    m_file = ::open(folderOf(m_target).constData(), O_WRONLY | O_TMPFILE | O_CLOEXEC, privateMode);
    if (m_file < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
        ::unlink(m_unfinished.constData()); // of a write that was cut off
        m_file = ::open(m_unfinished.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, privateMode);
        m_isNamed = m_file >= 0;
    }
    m_result = FileResult::ofCall(m_file);
}

PrivateFileWriter::~PrivateFileWriter() {
    if (m_file >= 0)
        ::close(m_file);
    if (m_isNamed)
        ::unlink(m_unfinished.constData());
}

FileResult PrivateFileWriter::write(const QByteArray &piece) {
    qsizetype written = 0;
    while (m_result && written < piece.size()) {
        const ssize_t n = ::write(m_file, piece.constData() + written, static_cast<size_t>(piece.size() - written));
        if (n < 0 && errno != EINTR)
            m_result = FileResult::ofCall(-1);
        else if (n == 0)
            m_result = FileResult::failure(ENOSPC);
        written += n > 0 ? n : 0;
    }
    return m_result;
}

FileResult PrivateFileWriter::commit() {
    if (m_result)
        m_result = FileResult::ofCall(::fsync(m_file));
    if (m_result)
        m_result = m_isNamed ? renamed(m_unfinished, m_target) : giveName();
    if (m_result) {
        m_isNamed = false;
        syncFolder(folderOf(m_target));
    }
    return m_result;
}

FileResult PrivateFileWriter::linkAs(const QByteArray &name) const {
    const QByteArray self = "/proc/self/fd/" + QByteArray::number(m_file);
    return FileResult::ofCall(::linkat(AT_FDCWD, self.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW));
}

FileResult PrivateFileWriter::giveName() const {
    FileResult result = linkAs(m_target);
    // A link cannot replace a file, a rename can. What stands under the name in between is another write's, cut off or
    // under way, and whole in either case.
    constexpr int mostTries = 10;
    for (int i = 0; i < mostTries && result.error() == EEXIST; ++i) {
        result = linkAs(m_unfinished);
        if (result) {
            result = renamed(m_unfinished, m_target);
            if (result || result.error() != ENOENT)
                break;
            result = FileResult::failure(EEXIST); // another write took the name away
        } else if (result.error() == EEXIST) {
            ::unlink(m_unfinished.constData());
        }
    }
    if (!result)
        ::unlink(m_unfinished.constData());
    return result;
}

std::optional<QString> setUnreadableFileAside(const QString &path, Date now) {
    const auto seconds = static_cast<qint64>(now.secondsSince1970);
    const QString name = path + QStringLiteral(".unreadable-") +
                         QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString(QStringLiteral("yyyyMMdd-HHmmss"));
    constexpr int mostTries = 1000;
    QString free = name;
    for (int i = 2; i <= mostTries; ++i) {
        const FileResult moved = renamed(QFile::encodeName(path), QFile::encodeName(free), RENAME_NOREPLACE);
        if (moved)
            return free;
        if (moved.error() != EEXIST)
            break;
        free = name + QLatin1Char('-') + QString::number(i);
    }
    return std::nullopt;
}

} // namespace tavrine
