#pragma once

#include "ports/Workspace.h"

#include <memory>

namespace tavrine {

/// The desktop as an X server and its window manager tell it.
///
/// Lives on the main thread, on an X connection of its own that sleeps until the active window changes. Asking for the
/// frontmost application costs one bounded round trip to the server, which puts the answer after every notice that was
/// sent before, and never one to another program.
///
///  1. The active window is what the window manager says in _NET_ACTIVE_WINDOW.
///     A moment without one, 100 ms at most, counts for the program that was active before.
///  2. Without a window manager it is the window that has the keyboard, or the closest one above it that has a class.
///  3. A dialogue belongs to the program whose window it was opened for, even where another process draws it.
///  4. The identifier is _GTK_APPLICATION_ID, else the class of WM_CLASS, each as `knownProgram` has it. This
///     program's own windows carry its own identifier.
///  5. The process is the one that the server sees at the other end of the window's connection, else _NET_WM_PID.
class X11Workspace final : public Workspace {
public:
    X11Workspace();
    ~X11Workspace() override;

    [[nodiscard]] NotificationCenter &notificationCenter() override;
    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] bool isFrontmostKnown() const override;

    [[nodiscard]] QList<RunningApplication> runningApplications() const override;

    /// Asks the desktop's file manager over D-Bus; without one that understands it, opens the folders.
    void activateFileViewerSelecting(const QList<QUrl> &urls) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace tavrine
