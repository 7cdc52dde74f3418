#include "adapters/gnome/GnomeApplicationActivator.h"

#include <algorithm>

namespace tavrine {

const GnomeWindow *GnomeApplicationActivator::windowOf(const RunningApplication &application) const {
    const auto &windows = m_shell.windows();
    auto found = std::ranges::find_if(windows, [&application](const GnomeWindow &window) {
        return window.number == application.window && window.process == application.processIdentifier;
    });
    // That window is closed; the program may have others.
    if (found == windows.end() && application.processIdentifier != 0)
        found = std::ranges::find(windows, application.processIdentifier, &GnomeWindow::process);
    return found == windows.end() ? nullptr : &*found;
}

bool GnomeApplicationActivator::isRunning(const RunningApplication &application) const {
    return m_shell.isAttached() ? windowOf(application) != nullptr : m_onX.isRunning(application);
}

bool GnomeApplicationActivator::activate(const RunningApplication &application) {
    if (!m_shell.isAttached())
        return m_onX.activate(application);
    const GnomeWindow *const window = windowOf(application);
    if (window)
        m_shell.activateWindow(window->number);
    return window;
}

} // namespace tavrine
