#pragma once

#include "adapters/x11/X11ApplicationActivator.h"
#include "ports/EdgeWindow.h"

#include <functional>
#include <utility>

namespace tavrine {

/// Windows at the edge of a screen as Qt widgets on X11. Lives on the main thread; outlives its windows.
///
///  1. They by-pass the window manager: a managed one is put below panels by some, and into task bars by others.
///  2. The server's window has the largest size from the beginning. What is shown of it grows within it, painted: to
///     change a window's size at each step makes the compositor take a new picture of it each time.
///  3. Without a compositor the same window is cut to the outline of what is shown.
///  4. What is asked of the server is waited for a fifth of a second at most. A change of where it takes the mouse is
///     waited for nowhere.
class X11EdgeWindows final : public EdgeWindows {
public:
    /// `activator` is asked for when a window takes the keyboard, and outlives the windows.
    using Activator = std::function<X11ApplicationActivator &()>;
    explicit X11EdgeWindows(Activator activator) : m_activator(std::move(activator)) {}

    [[nodiscard]] std::unique_ptr<EdgeWindow> makeEdgeWindow(const EdgeWindowDescription &description) override;

private:
    Activator m_activator;
};

} // namespace tavrine
