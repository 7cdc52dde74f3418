#pragma once

#include "adapters/gnome/GnomeShell.h"
#include "ports/TaskLauncher.h"

namespace tavrine {

/// Starts programs as the launcher below it does, and hands the capture tool a picture of the screens: the X server
/// that the tool knows has none of the programs of Wayland. Without the extension the tool cannot be started.
///
/// Lives on the main thread. One capture at a time: one that is begun ends the one before, and is taken when that is
/// off the screen. The tool hears no keys over a program of Wayland, so the shell watches for Escape as long as it
/// runs.
class GnomeTaskLauncher final : public TaskLauncher {
public:
    /// Both outlive it.
    GnomeTaskLauncher(GnomeShell &shell, TaskLauncher &plain) : m_shell(shell), m_plain(plain) {}

    [[nodiscard]] std::shared_ptr<Task> makeTask(const QString &launchPath, const QStringList &arguments) override;

private:
    class Capture;

    GnomeShell &m_shell;
    TaskLauncher &m_plain;
    std::weak_ptr<Capture> m_last; ///< that was launched
};

} // namespace tavrine
