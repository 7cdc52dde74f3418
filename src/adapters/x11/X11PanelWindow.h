#pragma once

#include "adapters/x11/X11ApplicationActivator.h"
#include "ports/PanelWindow.h"

class QWindow;

namespace tavrine {

/// Maps a described panel onto a window that Qt made and that is not on the screen: type, states, desktops, and
/// whether clicks pass. The window manager forgets all of it when a window goes, so this is called before each showing.
///
/// A panel that takes the keyboard is managed, kept above and on all desktops: once it has the keyboard it stands
/// above a full-screen window too, and it gives the keyboard back when it goes. One that takes none by-passes the
/// window manager, which no other way keeps a window above a full-screen one that has the keyboard. This server has
/// no means to hide a window's pixels from other programs, so `sharing` changes nothing here.
void describeToDesktop(QWindow &window, const PanelDescription &description, bool ignoresMouseEvents);

/// Panels as Qt widgets on X11. Lives on the main thread; outlives its panels.
class X11PanelWindows final : public PanelWindows {
public:
    explicit X11PanelWindows(X11ApplicationActivator &activator) : m_activator(activator) {}

    [[nodiscard]] std::unique_ptr<PanelWindow> makePanel(const PanelDescription &description) override;
    [[nodiscard]] bool isComposited() const override;

private:
    X11ApplicationActivator &m_activator;
};

} // namespace tavrine
