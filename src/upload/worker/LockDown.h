#pragma once

#include "walls/LockDown.h"

#include <string>
#include <vector>

/// The walls round a script.
namespace tavrine {

/// For the process that runs the script: it only computes, and has one thread. To be called with the JavaScript world
/// made (before that the engine still needs files) and the script not yet read.
[[nodiscard]] LockDownError lockScriptProcess();

/// For the process that does HTTP: it may reach the internet and read what `readablePlaces` name (names, certificates,
/// libraries). It may not reach the sockets of this machine's programs, write files, start programs or processes, or
/// look into others. A process it may signal only through a pidfd that it has already.
[[nodiscard]] LockDownError lockNetworkProcess(const std::vector<std::string> &readablePlaces);

} // namespace tavrine
