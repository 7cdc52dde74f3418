#pragma once

#include "ports/Screens.h"

#include <memory>

namespace tavrine {

/// Looks at the pointer on a thread and a connection of its own: a look costs a fifth of one by the main thread, which
/// has to wake with all that hangs on it. Made and ended on the main thread, which never waits for it: the thread goes
/// once it comes to itself. A server that is gone ends the looking; `lastLook` then stands still.
class X11PointerWatch final : public PointerWatch {
public:
    X11PointerWatch(Time &time, Seconds interval, std::function<void()> handler);
    ~X11PointerWatch() override;

    [[nodiscard]] Date lastLook() const override;
    void setTellsAll(bool tellsAll) override;

private:
    class Looking;
    std::shared_ptr<Looking> m_looking;
};

} // namespace tavrine
