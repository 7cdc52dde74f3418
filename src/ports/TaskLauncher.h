#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

/// One run of another program. Made ready, then launched once.
class Task {
public:
    /// Called once with the exit status, on a thread that is not the main one; 128 and more when a signal ended it.
    using TerminationHandler = std::function<void(int terminationStatus)>;

    virtual ~Task() = default;

    /// Before the launch.
    virtual void setTerminationHandler(TerminationHandler handler) = 0;

    /// Starts the program. None when it runs; otherwise why it could not be started, and the handler is never called.
    [[nodiscard]] virtual std::optional<QString> launch() = 0;

    [[nodiscard]] virtual bool isRunning() const = 0;

    /// Asks it to end (SIGTERM) and does not wait. Nothing when it does not run.
    virtual void terminate() = 0;
};

/// Starts other programs. Lives on the main thread, as long as the process; dropping a task does not end its program.
class TaskLauncher {
public:
    virtual ~TaskLauncher() = default;

    /// `launchPath` is the program's file, or a bare name for one that stands beside this program's own; the system's
    /// capture tool, "/usr/sbin/screencapture", stands there too. The program gets exactly these arguments, our
    /// environment, and nothing on its standard input.
    [[nodiscard]] virtual std::shared_ptr<Task> makeTask(const QString &launchPath, const QStringList &arguments) = 0;
};

} // namespace tavrine
