#include "adapters/desktops/MakeDesktop.h"

#include "adapters/desktops/WaylandDesktop.h"
#include "adapters/desktops/X11Desktop.h"
#include "adapters/wayland/WaylandSession.h"

namespace tavrine {

std::unique_ptr<Desktop> makeDesktop() {
    // A person who names the toolkit's platform has a reason.
    const QByteArray named = qgetenv("QT_QPA_PLATFORM");
    const WaylandSession session =
        named.isEmpty() || named.startsWith("wayland") ? waylandSession() : WaylandSession::none;
    if (session == WaylandSession::native)
        return std::make_unique<WaylandDesktop>();
    if (session == WaylandSession::managed)
        qputenv("QT_QPA_PLATFORM", "xcb"); // its X server gives panels and a clipboard that Wayland refuses
    return std::make_unique<X11Desktop>();
}

} // namespace tavrine
