#pragma once

#include "base/Descriptor.h"

#include <QByteArray>
#include <QString>

#include <sys/types.h>

namespace tavrine {

/// A program started with no arguments, this process's environment, pipes on standard input and output, and standard
/// error on the null device.
///
/// Signals go through a pidfd, so they can never hit another process; `isRunning`, `terminate` and `kill` may be called
/// from any thread while the task lives.
class WorkerTask {
public:
    /// Zero, or why it could not be started (an errno).
    [[nodiscard]] int launch(const QString &executable);

    /// The pipe to its standard input; non-blocking. Can be taken once.
    [[nodiscard]] Descriptor takeInput() { return std::move(m_input); }
    /// The pipe from its standard output; non-blocking.
    [[nodiscard]] int output() const { return m_output.number(); }
    /// Readable once the process has ended.
    [[nodiscard]] int process() const { return m_process.number(); }

    [[nodiscard]] bool isRunning() const;
    void terminate() const;
    void kill() const;
    /// Blocks until the process has ended, and lets the system forget it.
    void waitUntilExit() const;

private:
    Descriptor m_input;
    Descriptor m_output;
    Descriptor m_process;
};

} // namespace tavrine
