#pragma once

#include <functional>

namespace tavrine {

/// Whether packets have a way out of this machine.
enum class PathStatus { satisfied, unsatisfied };

/// Watches the way out over all interfaces. Lives on the main thread, as long as the process.
///
///  1. A path is satisfied while there is a default route, for either family of addresses, over an interface that is up
///     and has its carrier.
///  2. The handler hears of the present status soon after `start`, never within it, and then of every change. Where the
///     desktop cannot be asked it hears nothing.
///  3. Changes that come close together are told as one; what is told last is what holds.
class PathMonitor {
public:
    using Handler = std::function<void(PathStatus)>;

    virtual ~PathMonitor() = default;

    /// Begins to watch; another handler takes the place of an earlier one.
    virtual void start(Handler pathUpdateHandler) = 0;
};

} // namespace tavrine
