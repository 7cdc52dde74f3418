#pragma once

#include "adapters/gnome/GnomeShell.h"
#include "adapters/x11/X11Access.h"

namespace tavrine {

/// What this program may do is what its extension of the shell does for it: with it keys are watched and typed and the
/// screens are seen, without it neither. The person switches it on and off. Lives on the main thread.
class GnomeAccess final : public X11Access {
public:
    explicit GnomeAccess(GnomeShell &shell) : m_shell(shell) {}

    [[nodiscard]] bool isAccessibilityTrusted() const override { return m_shell.isAttached(); }
    [[nodiscard]] bool isScreenCaptureGranted() const override { return m_shell.isAttached(); }

private:
    GnomeShell &m_shell;
};

} // namespace tavrine
