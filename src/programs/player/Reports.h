#pragma once

#include "adapters/linux/PlayerProtocol.h"

#include <cstdlib>

#include <unistd.h>

namespace tavrine {

/// Straight to the descriptor, whole or not at all: lines are shorter than a pipe takes at once.
inline void say(const playerProtocol::Report &report) {
    const std::string line = playerProtocol::lineOf(report);
    static_cast<void>(::write(STDOUT_FILENO, line.data(), line.size()));
}

/// Nothing is torn down: what ends with the process is silent sooner.
[[noreturn]] inline void leave(const playerProtocol::Report &report) {
    say(report);
    std::_Exit(EXIT_SUCCESS);
}

} // namespace tavrine
