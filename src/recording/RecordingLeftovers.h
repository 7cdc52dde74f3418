#pragma once

#include <QStringList>

namespace tavrine {

/// The recordings in the folder of temporary files that nobody has saved or deleted, the oldest first: a process that
/// ended in the middle has left them. Files in which nothing stands go, and copies that were being made of recordings,
/// which are still here themselves.
[[nodiscard]] QStringList recordingLeftovers(const QString &temporaryFolder);

} // namespace tavrine
