#pragma once

#include "walls/LockDown.h"

namespace tavrine {

/// What a recorder keeps: to write the file that it has open, to be told and to answer on the socket that it has, to
/// see memory that it is handed, and one thread for the disk. No files, no network, no other processes.
[[nodiscard]] LockDownError lockRecorder();

} // namespace tavrine
