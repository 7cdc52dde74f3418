#pragma once

#include "ports/Folders.h"

namespace tavrine {

/// Sets HOME to the person's home by the account database where it is unset or empty: Qt would take the root folder
/// for it, and every library and every program that is started reads it anew. `xdgFolders` does it as well; to be
/// called before the process has further threads.
void settleHome();

/// The folders of the desktop's base-directory and user-directory conventions, read from the environment now.
[[nodiscard]] Folders xdgFolders();

} // namespace tavrine
