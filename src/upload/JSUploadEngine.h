#pragma once

#include "base/ConcurrentQueue.h"
#include "upload/UploadScriptError.h"
#include "upload/WatchdogQueue.h"

#include <QString>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace tavrine {

class Time;

/// Runs the person's upload script in a worker process: one for each run, with its own pipes. The script is untrusted
/// code, and so are the worker's bytes once it has read it.
///
/// Owned by the program's entry. `run` is called on `queue()`; several runs do not know of each other.
class JSUploadEngine {
public:
    /// Called once, on the main queue.
    using Completion = std::function<void(const UploadScriptRunResult &)>;

    /// Between asking an overdue worker to end and ending it.
    static constexpr std::chrono::milliseconds grace{500};

    /// `workerPath` is where the worker ought to be. `time` outlives the engine.
    JSUploadEngine(QString workerPath, Time &time);
    /// Ends the workers that still run, and starts no other.
    ~JSUploadEngine();
    JSUploadEngine(const JSUploadEngine &) = delete;
    JSUploadEngine &operator=(const JSUploadEngine &) = delete;

    /// "com.tavrine.jsUploadEngine", concurrent.
    [[nodiscard]] ConcurrentQueue &queue() { return m_queue; }

    /// Blocks its thread until the worker has ended or closed its output, but never for long after `timeout` seconds.
    void run(const QString &script, const QString &imageBase64, const QString &fileName, double timeout,
             Completion completion);

    /// "screenshot-20260131-120000.png" by the local time.
    [[nodiscard]] QString uploadFileName() const;

private:
    class Run;

    [[nodiscard]] bool remember(const std::shared_ptr<Run> &run);

    QString m_workerPath;
    Time &m_time;
    std::mutex m_lock; // guards the next two
    std::vector<std::weak_ptr<Run>> m_runs;
    bool m_isEnding = false;
    WatchdogQueue m_watchdogQueue;
    ConcurrentQueue m_queue; // the last member: its runs end before what they use
};

} // namespace tavrine
