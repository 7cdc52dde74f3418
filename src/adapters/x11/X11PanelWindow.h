#pragma once

#include "adapters/x11/X11ApplicationActivator.h"
#include "ports/PanelWindow.h"

namespace tavrine {

/// Panels as Qt widgets on X11. Lives on the main thread; outlives its panels.
///
/// What is asked of the server here is waited for a fifth of a second at most. Qt's own requests, when it makes a
/// window, have no bound: a program that holds the server holds what is painted, and nothing could be shown meanwhile.
class X11PanelWindows final : public PanelWindows {
public:
    explicit X11PanelWindows(X11ApplicationActivator &activator) : m_activator(activator) {}

    [[nodiscard]] std::unique_ptr<PanelWindow> makePanel(const PanelDescription &description) override;
    [[nodiscard]] bool isComposited() const override;
    [[nodiscard]] bool isAsking() const override;

private:
    X11ApplicationActivator &m_activator;
};

} // namespace tavrine
