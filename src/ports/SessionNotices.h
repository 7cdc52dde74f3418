#pragma once

#include <functional>
#include <memory>

namespace tavrine {

/// What happens to the whole session and can hurt who watches the mouse.
enum class SessionNotice {
    didWake,              ///< the machine woke from sleep
    screensDidWake,       ///< the screens were switched on again
    activeSpaceDidChange, ///< another desktop is shown
    didBecomeActive,      ///< a window of this program got the keyboard while none had it
    didUnhide,            ///< the desktop's windows, this program's among them, are shown again
    screenIsUnlocked,     ///< the lock screen went
};

/// Tells of them. Lives on the main thread, as long as the process, and watches nothing while nobody follows.
///
///  1. Each is told in a turn of the main queue after it happened. One that a desktop tells twice may be told twice.
///  2. What happened before somebody followed is not told.
///  3. What the desktop tells no program is not told here either, and `tells` says so.
class SessionNotices {
public:
    /// Ends the following when it is released; also from within the handler.
    using Token = std::shared_ptr<void>;

    virtual ~SessionNotices() = default;
    [[nodiscard]] virtual bool tells(SessionNotice /*notice*/) const { return true; }
    [[nodiscard]] virtual Token follow(std::function<void(SessionNotice)> handler) = 0;
};

} // namespace tavrine
