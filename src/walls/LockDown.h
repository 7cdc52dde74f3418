#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include <sys/resource.h>

/// The walls round a process that works on what may be hostile. They are one-way and hold for the whole process; where
/// one cannot be applied the process must not go on, for a wall with a hole looks like a wall.
///
/// One wall is not asked for where the kernel has none: Landlock. It stands behind the filter of system calls, which
/// every kernel has that this program runs on.
namespace tavrine {

/// Which step failed, and the system's words.
using LockDownError = std::optional<std::string>;

enum class Threads { one, several };

/// For a process that has all it needs and only computes: no files, no network, no other processes, no new descriptors
/// (but those by which threads wake each other), no executable memory, no core dumps; `memory` bytes beyond what it
/// has, and threads only where they are asked for. What is open stays open. To be called with the libraries and their
/// data loaded, for nothing can be opened later, and what is hostile not yet read.
[[nodiscard]] LockDownError lockComputingProcess(std::size_t memory, Threads threads);

// The steps of that, for a process that needs other rules.

/// Both limits, of which the upper cannot be raised again by an ordinary process.
[[nodiscard]] LockDownError limit(const char *step, __rlimit_resource resource, rlim_t value);
/// `more` bytes of address space beyond what is in use: an engine may have reserved gigabytes of it.
[[nodiscard]] LockDownError limitMemory(std::size_t more);
/// No core dumps, no look into this process by others of the same person, and no rights by starting a program.
[[nodiscard]] LockDownError keepToOurselves();

/// Steps in order until one fails.
template <std::size_t count>
[[nodiscard]] LockDownError inOrder(const std::array<LockDownError (*)(), count> &steps) {
    for (const auto step : steps) {
        if (LockDownError error = step())
            return error;
    }
    return std::nullopt;
}

} // namespace tavrine
