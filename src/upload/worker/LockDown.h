#pragma once

#include <optional>
#include <string>
#include <vector>

/// The walls round a script. Both locks are one-way and hold for the whole process; where one cannot be applied the
/// process must not go on, for a wall with a hole looks like a wall.
namespace tavrine {

/// Which step failed, and the system's words.
using LockDownError = std::optional<std::string>;

/// For the process that runs the script: no files, no network, no other processes or threads, no new descriptors, no
/// executable memory, and a limit on memory. What is open stays open. To be called with the JavaScript world made
/// (before that the engine still needs some of it) and the script not yet read.
[[nodiscard]] LockDownError lockScriptProcess();

/// For the process that does HTTP: it may reach the network and read the system's files (names, certificates,
/// libraries), and those in `readableFolders`. It may not write files, start programs or processes, or look into
/// others. A process it may signal only through a pidfd that it has already.
[[nodiscard]] LockDownError lockNetworkProcess(const std::vector<std::string> &readableFolders);

} // namespace tavrine
