#include "utilities/lofi/TrackCopy.h"

#include "base/Descriptor.h"
#include "base/WholeFile.h"

#include <QFile>

#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr std::size_t pieceBytes = std::size_t(8) << 20;
constexpr std::size_t bufferBytes = std::size_t(256) << 10;

/// 0 or errno's number.
using Outcome = int;

/// The kernel has no way between these two files.
bool isNoWay(int error) {
    return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EBADF ||
           error == EPERM;
}

Outcome copyByHand(int from, WholeFileWriter &to, const std::function<bool()> &isStopped) {
    std::vector<char> buffer(bufferBytes);
    for (;;) {
        if (isStopped())
            return ECANCELED;
        const ssize_t count = ::read(from, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count < 0 ? errno : 0;
        if (const int error = to.write({buffer.data(), static_cast<std::size_t>(count)}))
            return error;
    }
}

/// Goes on by hand where the kernel does not.
Outcome copyContents(int from, WholeFileWriter &to, const std::function<bool()> &isStopped) {
    if (::ioctl(to.descriptor(), FICLONE, from) == 0)
        return 0;
    for (;;) {
        if (isStopped())
            return ECANCELED;
        const ssize_t count = ::copy_file_range(from, nullptr, to.descriptor(), nullptr, pieceBytes, 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && !isNoWay(errno))
            return errno;
        if (count <= 0) // also where it believes that a file of the kernel's own is empty
            return copyByHand(from, to, isStopped);
    }
}

} // namespace

FileResult copyWholeFile(const QString &from, const QString &to, const std::function<bool()> &isStopped) {
    const Descriptor source(::open(QFile::encodeName(from).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!source.isOpen() || ::fstat(source.number(), &status) != 0)
        return FileResult::failure(errno);
    if (!S_ISREG(status.st_mode))
        return FileResult::failure(S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP);
    WholeFileWriter writer(QFile::encodeName(to).toStdString(),
                           {.rights = FileRights::ownerOnly, .isDurable = true, .isStopped = isStopped});
    if (writer.descriptor() >= 0)
        if (const Outcome error = copyContents(source.number(), writer, isStopped))
            writer.fail(error);
    const int error = writer.commit();
    return error == 0 ? FileResult() : FileResult::failure(error);
}

} // namespace tavrine
