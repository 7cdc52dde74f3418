#pragma once

#include "base/Date.h"
#include "base/FileResult.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace tavrine {

/// Makes the folder `path` and its missing parents; what is made belongs to the person alone (mode 0700). Folders that
/// stand already keep their mode. Fails when there is no such folder afterwards.
FileResult makePrivateFolder(const QString &path);

/// The same for a folder that is the program's alone: one that stands already, and belongs to the person, gets mode
/// 0700 as well. An older version or a copy from elsewhere may have left it open to others.
FileResult claimPrivateFolder(const QString &path);

/// Takes the rights of others from the file at `path`, if it is a plain file of the person's own. A link is not
/// followed, and the file is not opened.
void claimPrivateFile(const QString &path);

/// Replaces the file at `path` whole and durably, readable by the person alone (mode 0600): after a crash there is
/// either the old content or the new one. When it could not be written the old content stands.
FileResult writePrivateFile(const QString &path, const QByteArray &content);

/// The same for a content that comes in pieces. The file has no name before `commit`, so that a program that is killed
/// in between leaves nothing behind; only where the file system cannot do that, or another file is replaced, does it
/// pass through the name with ".unfinished" behind it, where the next write takes it away.
class PrivateFileWriter {
public:
    /// A link keeps its place: the file that it points to is the one that is written.
    explicit PrivateFileWriter(const QString &path);
    ~PrivateFileWriter(); ///< without a commit nothing stays
    PrivateFileWriter(const PrivateFileWriter &) = delete;
    PrivateFileWriter &operator=(const PrivateFileWriter &) = delete;

    /// After a failure every further call fails in the same way.
    FileResult write(const QByteArray &piece);
    FileResult commit();

private:
    [[nodiscard]] FileResult giveName() const;
    [[nodiscard]] FileResult linkAs(const QByteArray &name) const;

    QByteArray m_target;
    QByteArray m_unfinished;
    int m_file = -1;
    bool m_isNamed = false; ///< it stands under `m_unfinished`
    FileResult m_result;
};

/// Moves the file at `path` out of the way, to a free name beside it that tells why and when: the path, ".unreadable-"
/// and the moment in UTC. The name, or none when it is still there.
std::optional<QString> setUnreadableFileAside(const QString &path, Date now);

} // namespace tavrine
