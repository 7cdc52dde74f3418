#pragma once

#include "ports/Screens.h"

#include <memory>

namespace tavrine {

/// Looks at the pointer on a thread and a connection of its own: a look costs a fifth of one by the main thread, which
/// has to wake with all that hangs on it. Made and ended on the main thread, which never waits for it: the thread goes
/// once it comes to itself. A server that is gone ends the looking; `lastLook` then stands still.
///
///  1. While the pointer is in use, or was within the last `interval`, or all looks are to be told, there is one every
///     `interval`.
///  2. While it rests the thread sleeps until the server's `PointerAlarm`, and looks once a second.
///  3. An alarm that is found to have missed a change is not relied on until it rings: there is a look every `interval`
///     again, as where there is no alarm. A server that is late when the alarm is made is asked for it again.
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
