#pragma once

#include <QStringList>

namespace tavrine {

/// False of a file that is not there, and of one that certainly holds no picture: one that is empty, or a movie that
/// was begun and has no part with pictures. True of anything else, whatever it is: it may be of worth to somebody.
[[nodiscard]] bool mayHoldPictures(const QString &path);

/// The recordings in the folder of temporary files that nobody has saved or deleted, the oldest first: a process that
/// ended in the middle has left them. Files without a picture go, and copies that were being made of recordings, which
/// are still here themselves.
[[nodiscard]] QStringList recordingLeftovers(const QString &temporaryFolder);

} // namespace tavrine
