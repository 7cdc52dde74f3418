#pragma once

#include "walls/LockDown.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace tavrine {

struct NetworkWalls {
    std::size_t memory;                             ///< beyond what is in use
    std::initializer_list<const char *> calls = {}; ///< that only this process makes
};

/// For a process that fetches and sends: it may reach the internet and read what `readablePlaces` name (names,
/// certificates, libraries), and write what it has open. It may not reach the sockets of this machine's programs, make
/// files, start programs or processes, or look into others.
[[nodiscard]] LockDownError lockNetworkProcess(const std::vector<std::string> &readablePlaces,
                                               const NetworkWalls &walls);

/// What a process needs to read that looks names up and checks certificates.
[[nodiscard]] std::vector<std::string> placesOfNetwork();

} // namespace tavrine
