#pragma once

#include "adapters/gnome/GnomeShell.h"
#include "adapters/x11/X11Workspace.h"
#include "base/NotificationCenter.h"

namespace tavrine {

/// The programs as the shell tells them through the extension, those of Wayland and of X alike; without it as the X
/// server has them, which knows its own alone. A window is told by the shell's number for it.
///
/// Lives on the main thread.
class GnomeWorkspace final : public QObject, public Workspace {
public:
    explicit GnomeWorkspace(GnomeShell &shell);

    [[nodiscard]] NotificationCenter &notificationCenter() override { return m_center; }
    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] bool isFrontmostKnown() const override { return m_shell.isAttached() || m_onX.isFrontmostKnown(); }
    [[nodiscard]] QList<RunningApplication> runningApplications() const override;
    void activateFileViewerSelecting(const QList<QUrl> &urls) override;

private:
    void follow();

    GnomeShell &m_shell;
    NotificationCenter m_center;
    X11Workspace m_onX;
    NotificationCenter::Token m_fromX;
    std::optional<RunningApplication> m_frontmost; ///< that was told last
};

} // namespace tavrine
