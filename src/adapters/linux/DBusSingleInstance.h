#pragma once

#include "adapters/linux/ApplicationObject.h"
#include "ports/Instance.h"

#include <memory>

namespace tavrine {

/// Sees to it that the program runs once in a session: the one that holds the lock of its display, and then owns the
/// bus name of its bundle identifier.
///
/// Lives on the main thread, as long as the process.
///
///  1. The lock is a file in the person's runtime folder; whoever gets it is the first, at once and with no bus asked.
///     It goes with the process, however that ends.
///  2. The first takes the bus name when the bus is open, and again when the bus was restarted. It is told of later
///     starts through org.freedesktop.Application.
///  3. A bus that several displays share knows one program: where another one owns the name, that one is brought
///     forward and this process ends, as if it had started later.
///  4. Where the bus started this process for a call, it hands the call on itself, to whoever has the name.
class DBusSingleInstance {
public:
    using Start = Instance;

    /// Called on the main thread when the program is started again while it runs. The action is what that start asks
    /// for, a word out of `startAction`; empty for nothing.
    using OnReopen = ApplicationObject::OnCalled;

    /// `identifiers` are those of this start.
    DBusSingleInstance(StartRequest request, StartIdentifiers identifiers);
    ~DBusSingleInstance();

    /// Needs no toolkit. Waits for nobody where this is the first one; else for the bus and for the other program, 2 s
    /// each at most. `otherIsSilent` has put a line on standard error.
    [[nodiscard]] Start start();

    /// For the first one, once the toolkit has started: takes the name as soon as there is a bus.
    void listen(OnReopen onReopen);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace tavrine
