#pragma once

#include "adapters/linux/PowerKeeper.h"

#include <memory>
#include <vector>

namespace tavrine {

// The services of a bus that hold something off. Each is asked only where somebody owns its name already: none is
// started for it.

/// logind of systemd, or elogind: the machine's sleep, its reaction to idleness, and to the lid. A lock each, since the
/// person may be allowed one and not the other.
[[nodiscard]] std::unique_ptr<PowerKeeper> makeLogindKeeper();

/// org.freedesktop.ScreenSaver, of the desktops and of screen savers that stand alone: blanking and locking.
[[nodiscard]] std::unique_ptr<PowerKeeper> makeScreenSaverKeeper();

/// org.gnome.SessionManager, which other desktops have as well: both the screen and the suspend.
[[nodiscard]] std::unique_ptr<PowerKeeper> makeSessionManagerKeeper();

/// org.freedesktop.PowerManagement: the suspend, and with some the screen too.
[[nodiscard]] std::unique_ptr<PowerKeeper> makePowerManagementKeeper();

/// All that are asked at once; the power manager is the last resort of `LinuxPowerAssertions`.
[[nodiscard]] std::vector<std::unique_ptr<PowerKeeper>> makeInhibitingServices();

} // namespace tavrine
