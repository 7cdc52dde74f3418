#include "programs/screencapture/WholeFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr mode_t ownerOnly = 0600;

std::string folderOf(const std::string &path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

int writeAll(int descriptor, const FilePieces &pieces) {
    for (const auto &piece : pieces)
        for (size_t done = 0; done < piece.size();) {
            const ssize_t count = ::write(descriptor, piece.data() + done, piece.size() - done);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return count < 0 ? errno : EIO;
            done += static_cast<size_t>(count);
        }
    return 0;
}

int openNameless(const std::string &path) {
    return ::open(folderOf(path).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, ownerOnly);
}

bool isWithoutNamelessFiles(int error) {
    return error == EOPNOTSUPP || error == EISDIR || error == EINVAL;
}

/// A name beside `path` that no file has; the file that holds the place is empty and ours.
std::string nameBeside(const std::string &path) {
    std::string name = folderOf(path) + "/.screencapture-XXXXXX";
    const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0)
        return {};
    ::close(descriptor);
    return name;
}

/// Gives the nameless file its name. Where one stands already it takes its place in one step, from a name beside it.
int giveName(int descriptor, const std::string &path) {
    const std::string self = "/proc/self/fd/" + std::to_string(descriptor);
    if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0)
        return 0;
    if (errno != EEXIST)
        return errno;
    const std::string beside = nameBeside(path);
    if (beside.empty())
        return errno;
    ::unlink(beside.c_str());
    if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, beside.c_str(), AT_SYMLINK_FOLLOW) != 0)
        return errno;
    if (::rename(beside.c_str(), path.c_str()) == 0)
        return 0;
    const int error = errno;
    ::unlink(beside.c_str());
    return error;
}

/// For file systems without nameless files: a hidden name beside, renamed at the end and removed on any failure.
int writeBeside(const std::string &path, const FilePieces &pieces, const std::function<bool()> &isStopped) {
    const std::string beside = nameBeside(path);
    if (beside.empty())
        return errno;
    const int descriptor = ::open(beside.c_str(), O_WRONLY | O_CLOEXEC);
    int error = descriptor < 0 ? errno : writeAll(descriptor, pieces);
    if (descriptor >= 0 && ::close(descriptor) != 0 && error == 0)
        error = errno;
    if (error == 0 && isStopped())
        error = ECANCELED;
    if (error == 0 && ::rename(beside.c_str(), path.c_str()) != 0)
        error = errno;
    if (error != 0)
        ::unlink(beside.c_str());
    return error;
}

} // namespace

int whyNotWritable(const std::string &path) {
    struct stat status {};
    if (path.empty() || path.back() == '/')
        return EISDIR;
    if (::stat(folderOf(path).c_str(), &status) != 0)
        return errno;
    if (!S_ISDIR(status.st_mode))
        return ENOTDIR;
    if (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
        return EISDIR;
    // The rights alone do not tell: root has them all, and a file system may be read-only.
    const int descriptor = openNameless(path);
    if (descriptor >= 0)
        return ::close(descriptor) == 0 ? 0 : errno;
    if (!isWithoutNamelessFiles(errno))
        return errno;
    const std::string beside = nameBeside(path);
    return beside.empty() || ::unlink(beside.c_str()) != 0 ? errno : 0;
}

int writeWholeFile(const std::string &path, const FilePieces &pieces, const std::function<bool()> &isStopped) {
    const int descriptor = openNameless(path);
    if (descriptor < 0)
        return isWithoutNamelessFiles(errno) ? writeBeside(path, pieces, isStopped) : errno;
    int error = writeAll(descriptor, pieces);
    if (error == 0)
        error = isStopped() ? ECANCELED : giveName(descriptor, path);
    ::close(descriptor);
    return error;
}

} // namespace tavrine
