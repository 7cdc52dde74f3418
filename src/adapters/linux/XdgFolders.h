#pragma once

#include "ports/Folders.h"

#include <QString>

namespace tavrine {

/// The folders of the desktop's base-directory and user-directory conventions, read from the environment now.
[[nodiscard]] Folders xdgFolders();

/// The file of the program's preferences, under the desktop's configuration folder.
[[nodiscard]] QString preferencesPath();

} // namespace tavrine
