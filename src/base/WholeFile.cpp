#include "base/WholeFile.h"

#include "base/Descriptor.h"
#include "base/ErrorText.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <random>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr mode_t ownerOnly = 0600;
constexpr mode_t everyone = 0666; // and the mask takes from it
constexpr mode_t rights = 0777;
constexpr int mostLinks = 40; // as the kernel follows
constexpr int mostNames = 100;

std::string folderOf(const std::string &path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// Where the file stands, or will: links are followed, also one that leads to a file that is not there yet.
std::string behindLinks(std::string path) {
    for (int i = 0; i < mostLinks; ++i) {
        std::array<char, PATH_MAX> to{};
        const ssize_t length = ::readlink(path.c_str(), to.data(), to.size());
        if (length <= 0)
            break;
        const std::string_view target(to.data(), static_cast<size_t>(length));
        path = target.starts_with('/') ? std::string(target) : folderOf(path) + '/' + std::string(target);
    }
    return path;
}

/// What stands at a path, as far as it decides on a write.
struct Place {
    int error = 0; ///< why no plain file can stand there
    bool isTaken = false;
    mode_t mode = 0; ///< of the file that stands there
};

Place placeAt(const std::string &path) {
    if (path.empty() || path.back() == '/')
        return {EISDIR};
    struct stat status {};
    if (::stat(folderOf(path).c_str(), &status) != 0)
        return {errno};
    if (!S_ISDIR(status.st_mode))
        return {ENOTDIR};
    if (::stat(path.c_str(), &status) != 0)
        return {errno == ENOENT ? 0 : errno};
    if (S_ISDIR(status.st_mode))
        return {EISDIR};
    return {S_ISREG(status.st_mode) ? 0 : ENOTSUP, true, static_cast<mode_t>(status.st_mode & rights)};
}

int writeAll(int descriptor, std::string_view piece) {
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

void syncFolder(const std::string &folder) {
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen())
        ::fsync(opened.number());
}

/// A hidden name beside `path` that hardly any file has.
std::string nameBeside(const std::string &path) {
    std::random_device random;
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "/.tavrine-%08x%08x", random(), random());
    return folderOf(path) + name.data();
}

/// Tries names beside `path` until `make` makes a file of one, for which it returns true. The name, or none with errno.
template <class Make>
std::string takeNameBeside(const std::string &path, const Make &make) {
    for (int i = 0; i < mostNames; ++i) {
        std::string name = nameBeside(path);
        if (make(name))
            return name;
        if (errno != EEXIST)
            break;
    }
    return {};
}

int rename(const std::string &from, const std::string &to) {
    if (::rename(from.c_str(), to.c_str()) == 0)
        return 0;
    const int error = errno;
    ::unlink(from.c_str());
    return error;
}

} // namespace

/// A file that is being written: without a name where the file system can do that, else under a hidden one beside.
class WholeFileWriter::Unfinished {
public:
    Unfinished(const std::string &path, mode_t mode) : m_path(path) {
        m_file = Descriptor(::open(folderOf(path).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
        if (m_file.isOpen() || (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL))
            return;
        m_beside = takeNameBeside(path, [&](const std::string &name) {
            m_file = Descriptor(::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
            return m_file.isOpen();
        });
    }
    ~Unfinished() {
        if (!m_beside.empty())
            ::unlink(m_beside.c_str());
    }
    Unfinished(const Unfinished &) = delete;
    Unfinished &operator=(const Unfinished &) = delete;

    [[nodiscard]] bool isOpen() const { return m_file.isOpen(); }
    [[nodiscard]] int file() const { return m_file.number(); }

    /// Where a file stands already, this one takes its place in one step, from a name beside it.
    int giveName() {
        if (!m_beside.empty())
            return rename(std::exchange(m_beside, {}), m_path);
        if (link(m_path))
            return 0;
        if (errno != EEXIST)
            return errno;
        const std::string beside = takeNameBeside(m_path, [this](const std::string &name) { return link(name); });
        return beside.empty() ? errno : rename(beside, m_path);
    }

private:
    [[nodiscard]] bool link(const std::string &name) const {
        const std::string self = "/proc/self/fd/" + std::to_string(m_file.number());
        return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    }

    std::string m_path;
    std::string m_beside; ///< empty for a file without a name
    Descriptor m_file;
};

std::optional<std::string> whyNotWritable(const std::string &path) {
    const std::string target = behindLinks(path);
    const Place place = placeAt(target);
    if (place.error == ENOTSUP)
        return "not a plain file";
    if (place.error != 0)
        return errorText(place.error);
    // The rights alone do not tell: root has them all, and a file system may be read-only.
    if (const int error = WholeFileWriter(path).write({}))
        return errorText(error);
    return std::nullopt;
}

WholeFileWriter::WholeFileWriter(const std::string &path, WholeFileOptions options)
    : m_options(std::move(options)), m_target(behindLinks(path)) {
    const Place place = placeAt(m_target);
    m_error = place.error;
    if (m_error != 0)
        return;
    const bool isUsual = m_options.rights == FileRights::asUsual;
    m_unfinished = std::make_unique<Unfinished>(m_target, isUsual ? everyone : ownerOnly);
    if (!m_unfinished->isOpen() || (isUsual && place.isTaken && ::fchmod(m_unfinished->file(), place.mode) != 0))
        m_error = errno;
}

WholeFileWriter::~WholeFileWriter() = default;

int WholeFileWriter::write(std::string_view piece) {
    if (m_error == 0)
        m_error = writeAll(m_unfinished->file(), piece);
    return m_error;
}

int WholeFileWriter::descriptor() const {
    return m_error == 0 ? m_unfinished->file() : -1;
}

void WholeFileWriter::fail(int error) {
    m_error = error;
}

int WholeFileWriter::commit() {
    if (m_error == 0 && m_options.isDurable && ::fsync(m_unfinished->file()) != 0)
        m_error = errno;
    if (m_error == 0 && m_options.isStopped && m_options.isStopped())
        m_error = ECANCELED;
    if (m_error == 0)
        m_error = m_unfinished->giveName();
    if (m_error == 0 && m_options.isDurable)
        syncFolder(folderOf(m_target));
    return m_error;
}

int writeWholeFile(const std::string &path, const std::vector<std::string_view> &pieces,
                   const WholeFileOptions &options) {
    WholeFileWriter writer(path, options);
    for (const std::string_view piece : pieces)
        writer.write(piece);
    return writer.commit();
}

} // namespace tavrine
