#pragma once

#include "adapters/gnome/GnomeShell.h"
#include "ports/ApplicationActivator.h"

namespace tavrine {

/// Brings programs forward with the extension's help; without it, and for this program's own windows, as the X server's
/// do. Lives on the main thread.
class GnomeApplicationActivator final : public ApplicationActivator {
public:
    /// Both outlive it.
    GnomeApplicationActivator(GnomeShell &shell, ApplicationActivator &onX) : m_shell(shell), m_onX(onX) {}

    [[nodiscard]] bool isRunning(const RunningApplication &application) const override;
    bool activate(const RunningApplication &application) override;
    void activateIgnoringOtherApps() override { m_onX.activateIgnoringOtherApps(); }
    void bringForward(quint32 window) override { m_onX.bringForward(window); }
    void hide() override { m_onX.hide(); }

private:
    [[nodiscard]] const GnomeWindow *windowOf(const RunningApplication &application) const;

    GnomeShell &m_shell;
    ApplicationActivator &m_onX;
};

} // namespace tavrine
