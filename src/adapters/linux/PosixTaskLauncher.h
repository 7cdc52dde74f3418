#pragma once

#include "ports/TaskLauncher.h"

namespace tavrine {

/// Programs as processes of this machine. Each one that runs has a thread of ours that waits for its end, and calls the
/// termination handler there.
///
/// What a program gets: its arguments, our environment, our standard output and error, nothing on its standard input,
/// none of our other files, and the signals as they are at login. SIGTERM reaches the program alone and not what it
/// started in turn; it comes too when our process ends, however that happens.
class PosixTaskLauncher final : public TaskLauncher {
public:
    /// `programFolder` is where this program's own file stands, and the programs that come with it.
    explicit PosixTaskLauncher(QString programFolder) : m_programFolder(std::move(programFolder)) {}

    [[nodiscard]] std::shared_ptr<Task> makeTask(const QString &launchPath, const QStringList &arguments) override;

    /// The file behind a launch path. A bare name, and "/usr/sbin/screencapture", which no Linux desktop has, are the
    /// programs of that name in our own folder; any other path is itself.
    [[nodiscard]] QString programAt(const QString &launchPath) const;

private:
    QString m_programFolder;
};

} // namespace tavrine
