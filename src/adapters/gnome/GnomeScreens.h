#pragma once

#include "adapters/gnome/GnomeShell.h"
#include "adapters/x11/X11Screens.h"

#include <QTimer>

namespace tavrine {

/// The screens as the X server has them, their scales as the compositor does, which enlarges what that server shows by
/// whatever is not a whole number, and the pointer as the extension tells it: the server itself knows the pointer
/// only over its own windows. A press of a hot key tells where the pointer is; whoever asks without one gets the last
/// place that is known, and the pointer is followed for a while.
///
/// Lives on the main thread.
class GnomeScreens final : public X11Screens {
public:
    explicit GnomeScreens(GnomeShell &shell);

    [[nodiscard]] QList<Screen> screens() const override;
    [[nodiscard]] PointerReading pointer() const override;
    [[nodiscard]] std::unique_ptr<PointerWatch> watchPointer(Time &time, Seconds interval,
                                                             std::function<void()> handler) override;

private:
    class Watch;

    GnomeShell &m_shell;
    mutable GnomeShell::InputWatch m_following; ///< for whoever asks again
    mutable QTimer m_endOfFollowing;
};

} // namespace tavrine
