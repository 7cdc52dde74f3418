#pragma once

#include "base/Date.h"

#include <QString>

namespace tavrine {

/// The folders of dragged captures begin with this, in the temporary folder.
inline constexpr auto dragFolderPrefix = "tavrine-drag-";

/// How long a dragged file stays: whoever it was given to may come for it late, or have been told of its path alone.
inline constexpr Seconds dragFileLife{3600.0};

/// Removes the folders of drags that have had their time.
void removeOldDrags(const QString &temporaryFolder, Date now);

/// The path for a capture that is dragged into another program: the file's own name, in a new folder of its own.
/// Nothing is made but that folder. Empty when there is no place for it.
[[nodiscard]] QString freshDragFile(const QString &temporaryFolder, const QString &fileName);

} // namespace tavrine
