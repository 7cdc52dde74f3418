#pragma once

#include "ports/Folders.h"

namespace tavrine {

/// The folders of the desktop's base-directory and user-directory conventions, read from the environment now.
[[nodiscard]] Folders xdgFolders();

} // namespace tavrine
