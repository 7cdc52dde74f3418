#pragma once

#include "adapters/gnome/GnomeShell.h"
#include "adapters/x11/X11Access.h"

namespace tavrine {

/// What this program may do is what its extension of the shell does for it: with it keys are watched and typed and the
/// screens are seen, without it neither. The person switches it on and off. Lives on the main thread.
class GnomeAccess final : public X11Access {
public:
    /// `showsScreen`: the desktop shows the screen over time without the extension too.
    GnomeAccess(GnomeShell &shell, std::function<bool()> showsScreen)
        : m_shell(shell), m_showsScreen(std::move(showsScreen)) {}

    void whenKnown(QObject *context, const std::function<void()> &known) override {
        m_shell.whenSettled(context, known);
    }
    [[nodiscard]] bool isAccessibilityTrusted() const override { return m_shell.isAttached(); }
    [[nodiscard]] bool isScreenCaptureGranted() const override { return m_shell.isAttached(); }
    [[nodiscard]] bool isScreenRecordingGranted() const override { return m_shell.isAttached() || m_showsScreen(); }

private:
    GnomeShell &m_shell;
    const std::function<bool()> m_showsScreen;
};

} // namespace tavrine
