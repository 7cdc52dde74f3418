#pragma once

#include "adapters/linux/PowerKeeper.h"

#include <memory>
#include <vector>

namespace tavrine {

// The services of a bus that hold something off. Each is asked only where somebody owns its name already: none is
// started for it.

/// logind of systemd, or elogind: the machine's sleep, its reaction to idleness while the screen is kept on, and to the
/// lid. A lock each, since the person may be allowed one and not the other.
[[nodiscard]] std::unique_ptr<PowerKeeper> makeLogindKeeper();

/// org.freedesktop.ScreenSaver, of the desktops and of screen savers that stand alone: blanking and locking.
[[nodiscard]] std::unique_ptr<PowerKeeper> makeScreenSaverKeeper();

/// org.gnome.SessionManager, which other desktops have as well: both the screen and the suspend. It knows no suspend
/// of an idle machine alone whose screen may blank, so there it may refuse the person's own as well.
[[nodiscard]] std::unique_ptr<PowerKeeper> makeSessionManagerKeeper();

/// org.freedesktop.PowerManagement: the suspend, and with some the screen too.
[[nodiscard]] std::unique_ptr<PowerKeeper> makePowerManagementKeeper();

/// All that are asked at once.
[[nodiscard]] PowerKeepers makeInhibitingServices();

/// The last resorts of `LinuxPowerAssertions`: the power manager, and what logind does in an idle session.
[[nodiscard]] PowerKeepers makeLastResorts();

} // namespace tavrine
