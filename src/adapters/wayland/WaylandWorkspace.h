#pragma once

#include "adapters/wayland/WaylandWindows.h"
#include "base/NotificationCenter.h"
#include "ports/Workspace.h"

#include <QObject>
#include <QTimer>

namespace tavrine {

/// The desktop as its compositor tells it.
///
/// Lives on the main thread. Asking for the frontmost application costs one bounded round trip to the compositor, and
/// never one to another program.
///
///  1. The active window is the one that the compositor calls so. A moment without one, 100 ms at most, counts for the
///     program that was active before, and so does all the time in which a panel of this program has the keyboard.
///  2. The identifier is the window's application identifier as `knownProgram` has it; for an X program that is its
///     window class.
///  3. The process is known where the compositor tells it. Else programs are the same that are called the same.
class WaylandWorkspace final : public QObject, public Workspace {
public:
    explicit WaylandWorkspace(std::shared_ptr<WaylandWindows> windows);
    ~WaylandWorkspace() override;

    [[nodiscard]] NotificationCenter &notificationCenter() override { return m_center; }
    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] QList<RunningApplication> runningApplications() const override;
    void activateFileViewerSelecting(const QList<QUrl> &urls) override;

private:
    void update();
    [[nodiscard]] bool hasPanelTheKeyboard() const;
    void become(std::optional<RunningApplication> next);

    std::shared_ptr<WaylandWindows> m_windows;
    WaylandWindows::Following m_following;
    NotificationCenter m_center;
    std::optional<RunningApplication> m_frontmost;
    QTimer m_pause;
    bool m_isPauseOver = false;
};

/// The program that a window belongs to. None when it names none.
[[nodiscard]] std::optional<RunningApplication> programOf(const WaylandWindow &window);

} // namespace tavrine
