#include "base/UserDefaults.h"

#include "base/NotificationCenter.h"
#include "base/Print.h"
#include "base/PrivateFiles.h"
#include "base/PropertyList.h"
#include "base/PropertyListCheck.h"
#include "base/Time.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {
namespace {

enum class FileState { missing, unreadable, read };

struct FileContent {
    FileState state = FileState::missing;
    QByteArray bytes;
};

FileContent readOnce(const QString &path) {
    // Without blocking, so that a pipe in the file's place cannot hold the program up.
    const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return {errno == ENOENT || errno == ENOTDIR ? FileState::missing : FileState::unreadable, {}};
    FileContent result{FileState::unreadable, {}};
    struct stat status {};
    if (::fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= largestPropertyList) {
        QByteArray bytes(status.st_size + 1, Qt::Uninitialized); // one more, to see the end without growing
        qsizetype length = 0;
        ssize_t n = 0;
        do {
            if (length == bytes.size())
                bytes.resize(bytes.size() * 2);
            n = ::read(file, bytes.data() + length, static_cast<size_t>(bytes.size() - length));
            length += n > 0 ? n : 0;
        } while ((n > 0 || (n < 0 && errno == EINTR)) && length <= largestPropertyList);
        bytes.truncate(length);
        if (n == 0)
            result = {FileState::read, bytes};
    }
    ::close(file);
    return result;
}

/// A file is taken for unreadable, with all that it holds, when it is so again: a machine may have no descriptor or no
/// memory left at one moment.
FileContent readWhole(const QString &path) {
    constexpr int tries = 3;
    FileContent content = readOnce(path);
    for (int i = 1; i < tries && content.state == FileState::unreadable; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        content = readOnce(path);
    }
    return content;
}

QByteArray fingerprint(const QByteArray &bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

// Between two tries to write what the disk did not take.
constexpr Seconds firstRetry{1};
constexpr Seconds longestRetry{64};

} // namespace

struct UserDefaults::Private {
    UserDefaults &owner;
    QString path;
    Time &time;
    NotificationCenter &center;

    PropertyList list;            ///< what the file held when it was last read or written, with our changes in it
    QByteArray known;             ///< fingerprint of the file when it was last read or written
    QSet<QString> unwritten = {}; ///< keys of ours that the file does not have yet
    bool isWriteDue = false;
    bool isRetryDue = false;
    Seconds untilRetry = firstRetry;
    bool isLookDue = false;
    mutable QHash<QString, std::optional<Value>> values = {}; ///< what was read from `list` so far
    QFileSystemWatcher watcher = {};

    void start();
    void watch();
    void lookLater();
    bool takeIn(const FileContent &content);
    bool merge(PropertyList outside);
    bool setAside();
    void writeLater();
    void tryAgainLater();
    bool write(const FileContent &present);
    void post() { center.post(QLatin1String(didChangeNotification)); }
};

void UserDefaults::Private::start() {
    const FileContent content = readWhole(path);
    if (content.state == FileState::read) {
        if (auto read = PropertyList::read(content.bytes)) {
            list = std::move(*read);
            known = fingerprint(content.bytes);
        } else {
            setAside();
        }
    } else if (content.state == FileState::unreadable) {
        setAside();
    }
    const auto changed = [this] { lookLater(); };
    QObject::connect(&watcher, &QFileSystemWatcher::fileChanged, &owner, changed);
    QObject::connect(&watcher, &QFileSystemWatcher::directoryChanged, &owner, changed);
    watch();
}

/// Watches the file, for those who write into it, and its folder, for those who replace it. Until there is a folder,
/// the nearest one above it.
void UserDefaults::Private::watch() {
    QStringList wanted;
    const QFileInfo info(path);
    QString folder = info.absolutePath();
    while (!QFileInfo(folder).isDir() && folder != QFileInfo(folder).absolutePath())
        folder = QFileInfo(folder).absolutePath();
    wanted.append(folder);
    if (info.isFile()) {
        wanted.append(path);
        if (info.isSymLink())
            wanted.append(QFileInfo(info.symLinkTarget()).absolutePath());
    }
    // A replaced file is another file under the same name: the watch must be made anew.
    if (!watcher.files().isEmpty())
        watcher.removePaths(watcher.files());
    for (const QString &old : watcher.directories()) {
        if (!wanted.contains(old))
            watcher.removePath(old);
    }
    for (const QString &each : std::as_const(wanted)) {
        if (!watcher.directories().contains(each))
            watcher.addPath(each);
    }
}

void UserDefaults::Private::lookLater() {
    if (isLookDue)
        return;
    isLookDue = true;
    time.async(&owner, [this] {
        isLookDue = false;
        watch();
        if (takeIn(readWhole(path)))
            post();
    });
}

/// Reads a change from outside. True when it changed a value.
bool UserDefaults::Private::takeIn(const FileContent &content) {
    if (content.state != FileState::read)
        return false;
    const QByteArray found = fingerprint(content.bytes);
    if (found == known)
        return false;
    auto outside = PropertyList::read(content.bytes);
    if (!outside)
        return false;
    known = found;
    return merge(std::move(*outside));
}

bool UserDefaults::Private::merge(PropertyList outside) {
    for (const QString &key : std::as_const(unwritten)) {
        if (const auto ours = list.value(key))
            outside.set(key, *ours);
        else
            outside.remove(key);
    }
    const QStringList before = list.keys();
    const QStringList after = outside.keys();
    bool isChanged = false;
    QSet<QString> either(before.begin(), before.end());
    either.unite(QSet<QString>(after.begin(), after.end()));
    for (const QString &key : std::as_const(either)) {
        if (!outside.isSame(key, list)) {
            isChanged = true;
            values.remove(key);
        }
    }
    list = std::move(outside);
    return isChanged;
}

/// Moves what stands at `path` out of the way. False when it is still there.
bool UserDefaults::Private::setAside() {
    const std::optional<QString> name = setUnreadableFileAside(path, time.now());
    if (name)
        printLine(QStringLiteral("DEBUG: The preferences could not be read and were set aside as ") + *name);
    else
        printLine(QStringLiteral("DEBUG: The preferences can neither be read nor set aside: ") + path);
    return name.has_value();
}

void UserDefaults::Private::writeLater() {
    if (isWriteDue)
        return;
    isWriteDue = true;
    time.async(&owner, [this] {
        isWriteDue = false;
        owner.synchronize();
    });
}

/// Until it is written, or the next change has written it: at a kill nothing is to be missing but what was tried.
void UserDefaults::Private::tryAgainLater() {
    if (std::exchange(isRetryDue, true))
        return;
    time.asyncAfter(untilRetry, &owner, [this] {
        isRetryDue = false;
        if (!unwritten.isEmpty())
            owner.synchronize();
    });
    untilRetry = std::min(untilRetry * 2, longestRetry);
}

/// Writes what is unwritten over the file that holds `present`, of which `takeIn` has read what can be read.
bool UserDefaults::Private::write(const FileContent &present) {
    if (unwritten.isEmpty())
        return true;
    const bool isBroken = present.state == FileState::unreadable ||
                          (present.state == FileState::read && fingerprint(present.bytes) != known);
    if (isBroken && !setAside())
        return false;
    const auto text = list.xml();
    if (!text || !makePrivateFolder(QFileInfo(path).absolutePath()) || !writePrivateFile(path, *text))
        return false;
    known = fingerprint(*text);
    unwritten.clear();
    untilRetry = firstRetry;
    watch();
    return true;
}

UserDefaults::UserDefaults(QString path, Time &time, NotificationCenter &center, QObject *parent)
    : QObject(parent), d(new Private{*this, std::move(path), time, center, {}, {}}) {
    d->start();
}

UserDefaults::~UserDefaults() {
    const FileContent present = readWhole(d->path);
    d->takeIn(present); // nobody is told any more
    d->write(present);
}

bool UserDefaults::contains(const QString &key) const {
    return d->list.contains(key);
}

const UserDefaults::Value *UserDefaults::find(const QString &key) const {
    auto found = d->values.constFind(key);
    if (found == d->values.constEnd())
        found = d->values.insert(key, d->list.value(key));
    return *found ? &**found : nullptr;
}

void UserDefaults::store(const QString &key, Value value) {
    value = PropertyList::asKept(std::move(value));
    if (const Value *present = find(key); !present || *present != value) {
        d->list.set(key, value);
        d->values.insert(key, std::move(value));
        d->unwritten.insert(key);
        d->writeLater();
    }
    d->post();
}

void UserDefaults::remove(const QString &key) {
    if (contains(key)) {
        d->list.remove(key);
        d->values.insert(key, std::nullopt);
        d->unwritten.insert(key);
        d->writeLater();
    }
    d->post();
}

bool UserDefaults::synchronize() {
    const FileContent present = readWhole(d->path);
    const bool isChanged = d->takeIn(present);
    const bool isWritten = d->write(present);
    if (!isWritten)
        d->tryAgainLater();
    if (isChanged)
        d->post();
    return isWritten;
}

} // namespace tavrine
