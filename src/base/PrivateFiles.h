#pragma once

#include "base/Date.h"
#include "base/FileResult.h"
#include "base/WholeFile.h"

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

/// The same for a content that comes in pieces; see `WholeFileWriter`.
class PrivateFileWriter {
public:
    explicit PrivateFileWriter(const QString &path);

    FileResult write(const QByteArray &piece);
    FileResult commit();

private:
    WholeFileWriter m_writer;
};

/// Moves the file at `path` out of the way, to a free name beside it that tells why and when: the path, ".unreadable-"
/// and the moment in UTC. The name, or none when it is still there.
std::optional<QString> setUnreadableFileAside(const QString &path, Date now);

} // namespace tavrine
