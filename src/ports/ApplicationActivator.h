#pragma once

#include "ports/Workspace.h"

#include <QtGlobal>

namespace tavrine {

/// Brings programs to the front. Lives on the main thread. The workspace tells when it happened.
class ApplicationActivator {
public:
    virtual ~ApplicationActivator() = default;

    /// True while the program runs and has a window that can be brought forward.
    [[nodiscard]] virtual bool isRunning(const RunningApplication &application) const = 0;

    /// Asks the desktop to bring the program to the front and give it the keyboard. False when it is gone. The change
    /// itself comes later, or not at all where the desktop refuses.
    virtual bool activate(const RunningApplication &application) = 0;

    /// Makes this program the one that may take the keyboard, ahead of all others.
    virtual void activateIgnoringOtherApps() = 0;

    /// A window of this program comes to the front and gets the keyboard, as the person wishes it: by the right of the
    /// launcher that called the program last, where it is not used yet, and by that of this moment otherwise. A right
    /// that is older than what the person has done elsewhere since may be refused.
    virtual void bringForward(quint32 window) = 0;

    /// This program gives way to what is behind it.
    virtual void hide() = 0;
};

} // namespace tavrine
