#pragma once

#include "adapters/wayland/WaylandWindows.h"
#include "ports/ApplicationActivator.h"

namespace tavrine {

/// Brings windows forward as a task bar does it. Lives on the main thread.
///
/// A window of this program is known to the compositor by its title alone: of two with one title the older comes.
class WaylandApplicationActivator final : public ApplicationActivator {
public:
    explicit WaylandApplicationActivator(std::shared_ptr<WaylandWindows> windows);
    ~WaylandApplicationActivator() override;

    [[nodiscard]] bool isRunning(const RunningApplication &application) const override;
    bool activate(const RunningApplication &application) override;
    /// Nothing: a panel takes the keyboard when it is shown, and the program has no part in it.
    void activateIgnoringOtherApps() override {}
    /// `window` is a QWindow's. One that was shown in this moment comes once the compositor tells of it.
    void bringForward(quint32 window) override;
    /// Minimises the program's windows, where the compositor knows such a thing.
    void hide() override;

private:
    [[nodiscard]] const WaylandWindow *windowOf(const RunningApplication &application) const;
    [[nodiscard]] bool bringForward(const QString &title);

    std::shared_ptr<WaylandWindows> m_windows;
    WaylandWindows::Following m_following;
    QString m_expected; ///< the title of a window that is to come forward when it is there; empty for none
};

} // namespace tavrine
