#include "adapters/desktops/MakeDesktop.h"

#include "adapters/desktops/GnomeDesktop.h"
#include "adapters/desktops/WaylandDesktop.h"
#include "adapters/desktops/X11Desktop.h"
#include "adapters/linux/DBusSingleInstance.h"
#include "adapters/wayland/WaylandSession.h"

namespace tavrine {
namespace {

/// Of this process, from the moment it is the only one until its desktop is made.
std::unique_ptr<DBusSingleInstance> theInstance;

std::unique_ptr<LinuxDesktop> desktopOfSession() {
    // A person who names the toolkit's platform has a reason.
    const QByteArray named = qgetenv("QT_QPA_PLATFORM");
    std::shared_ptr<WaylandConnection> connection;
    const WaylandSession session =
        named.isEmpty() || named.startsWith("wayland") ? waylandSession(connection) : WaylandSession::none;
    if (session == WaylandSession::native)
        return std::make_unique<WaylandDesktop>(std::move(connection));
    if (session == WaylandSession::managed) {
        qputenv("QT_QPA_PLATFORM", "xcb"); // its X server gives panels and a clipboard that Wayland refuses
        return std::make_unique<GnomeDesktop>();
    }
    return std::make_unique<X11Desktop>();
}

} // namespace

Instance becomeOnlyInstance(const StartRequest &request) {
    // The toolkit takes the variables away.
    theInstance = std::make_unique<DBusSingleInstance>(
        request, StartIdentifiers{.startupId = qgetenv("DESKTOP_STARTUP_ID"),
                                  .activationToken = qgetenv("XDG_ACTIVATION_TOKEN")});
    return theInstance->start();
}

std::unique_ptr<Desktop> makeDesktop() {
    auto desktop = desktopOfSession();
    desktop->setInstance(std::move(theInstance));
    return desktop;
}

} // namespace tavrine
