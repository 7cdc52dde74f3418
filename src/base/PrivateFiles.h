#pragma once

#include <QByteArray>
#include <QString>

namespace tavrine {

/// Makes the folder `path` and its missing parents; what is made belongs to the person alone (mode 0700). Folders that
/// stand already keep their mode. False when there is no such folder afterwards.
bool makePrivateFolder(const QString &path);

/// The same for a folder that is the program's alone: one that stands already, and belongs to the person, gets mode
/// 0700 as well. An older version or a copy from elsewhere may have left it open to others.
bool claimPrivateFolder(const QString &path);

/// Takes the rights of others from the file at `path`, if it is a plain file of the person's own. A link is not
/// followed, and the file is not opened.
void claimPrivateFile(const QString &path);

/// Replaces the file at `path` whole and durably, readable by the person alone (mode 0600): after a crash there is
/// either the old content or the new one. False when it could not be written; the old content then stands.
bool writePrivateFile(const QString &path, const QByteArray &content);

} // namespace tavrine
