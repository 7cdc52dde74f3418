#pragma once

#include "ports/Instance.h"

#include <QString>

#include <functional>
#include <memory>

namespace tavrine {

/// Sees to it that the program runs once in a session: the one that owns the bus name of its bundle identifier.
///
/// Lives on the main thread, as long as the process. Whoever gets the name is the first, so two starts at the same
/// moment make one program. The first is told of later starts through org.freedesktop.Application; without a session
/// bus every start is a first one.
class DBusSingleInstance {
public:
    using Start = Instance;

    /// `onReopen` is called on the main thread when the program is started again while it runs.
    explicit DBusSingleInstance(std::function<void()> onReopen);
    ~DBusSingleInstance();

    /// Waits for the bus and for the other program, 2 s each at most. `otherIsSilent` has put a line on standard error.
    [[nodiscard]] Start start();

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace tavrine
