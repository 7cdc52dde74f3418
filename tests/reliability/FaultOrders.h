#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tavrine::testing {

enum class FaultKind : std::int32_t { none = -1, write, sync, rename, open, map, connect, spawn };
inline constexpr std::size_t faultKinds = 7;

/// Whose calls are meant and counted: those of the program itself, or those of the programs that it starts.
enum class FaultRole : std::int32_t { main, worker };

/// What stands in the file of orders. The test writes the first part, `kind` at last, and the programs the rest;
/// `under-faults` knows these places too.
struct FaultOrders {
    std::atomic<FaultKind> kind;
    std::atomic<std::int32_t> countdown; ///< the call that fails is the one that takes this to 0
    std::int32_t error;
    std::atomic<FaultRole> role;
    std::atomic<std::int32_t> firedIn;                        ///< the process; 0 as long as nothing has failed
    std::array<std::atomic<std::int32_t>, faultKinds> counts; ///< calls of each kind
    std::array<char, 8192> story; ///< what failed, and behind it who called, innermost first
};
static_assert(std::atomic<std::int32_t>::is_always_lock_free && offsetof(FaultOrders, story) == 48);

} // namespace tavrine::testing
