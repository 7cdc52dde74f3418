#include "upload/JSUploadEngine.h"

#include "base/Time.h"
#include "upload/FinishOnceBox.h"
#include "upload/WorkerRecords.h"
#include "upload/WorkerTask.h"

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cmath>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr int mostRunsAtOnce = 64; // they wait and do not compute, so the cores are no measure

UploadScriptRunResult failure(UploadScriptError error) {
    return {std::nullopt, {}, std::move(error)};
}
UploadScriptRunResult failure(const QString &text) {
    return failure(UploadScriptError::runtimeError(text));
}

/// A limit that no clock can add up would be none.
WatchdogQueue::Clock::duration limitOf(double timeout) {
    const double seconds = std::isfinite(timeout) ? std::clamp(timeout, 0.0, 86'400.0) : 0.0;
    return std::chrono::duration_cast<WatchdogQueue::Clock::duration>(Seconds(seconds));
}

} // namespace

/// What one run shares between its own thread and the watchdog's.
class JSUploadEngine::Run : public std::enable_shared_from_this<Run> {
public:
    Run(JSUploadEngine &engine, double timeout, Completion completion)
        : m_engine(engine), m_timeout(timeout), m_completion(std::move(completion)),
          m_over(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

    void finish(const UploadScriptRunResult &result) {
        if (m_box.finish())
            m_engine.m_time.async([completion = m_completion, result] { completion(result); });
    }

    void scheduleWatchdog() {
        m_watchdog = m_engine.m_watchdogQueue.asyncAt(WatchdogQueue::Clock::now() + limitOf(m_timeout),
                                                      [self = shared_from_this()] { self->bark(); });
    }
    void cancelWatchdog() { m_engine.m_watchdogQueue.cancel(m_watchdog); }

    [[nodiscard]] int launch(const QString &executable) {
        const std::lock_guard guard(m_lock);
        const int error = m_task.launch(executable);
        m_isLaunched = error == 0;
        if (m_isLaunched && m_isOverdue)
            end(); // the watchdog was there before there was a worker
        return error;
    }

    /// Ends the worker now.
    void abandon() {
        const std::lock_guard guard(m_lock);
        m_isOverdue = true;
        if (m_isLaunched)
            m_task.kill();
    }

    void writeInput(QByteArray json) { m_engine.m_watchdogQueue.write(m_task.takeInput(), std::move(json)); }

    /// Up to the end of the worker or of its output; no longer than the watchdog's last step.
    [[nodiscard]] QByteArray readToEnd() {
        QByteArray bytes;
        while (true) {
            pollfd descriptors[] = {
                {m_task.output(), POLLIN, 0}, {m_task.process(), POLLIN, 0}, {m_over.number(), POLLIN, 0}};
            if (poll(descriptors, std::size(descriptors), -1) < 0)
                continue; // interrupted
            // Once the worker has ended, what is there is all that counts: it may have left its output to another
            // process.
            const bool isLast = descriptors[1].revents != 0 || descriptors[2].revents != 0;
            if (!readAvailable(bytes) || isLast)
                return bytes;
        }
    }

    void waitUntilExit() { m_task.waitUntilExit(); }

private:
    void bark() {
        // Before the worker is told to end: it may be gone at once, and its empty output is not what the person is
        // told.
        finish(failure(UploadScriptError::timeout(m_timeout)));
        const std::lock_guard guard(m_lock);
        m_isOverdue = true;
        if (m_isLaunched && m_task.isRunning())
            end();
    }

    void end() {
        m_task.terminate();
        m_engine.m_watchdogQueue.asyncAt(WatchdogQueue::Clock::now() + grace, [self = shared_from_this()] {
            if (self->m_task.isRunning())
                self->m_task.kill();
            eventfd_write(self->m_over.number(), 1);
        });
    }

    /// False at the end of the output. What is over the limit is read and dropped, so that the worker can end.
    bool readAvailable(QByteArray &bytes) {
        char buffer[64 * 1024];
        // Bounded, for a worker can write as fast as this reads.
        for (int i = 0; i < 64; ++i) {
            const ssize_t count = read(m_task.output(), buffer, sizeof buffer);
            if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR))
                return false;
            if (count < 0 && errno == EAGAIN)
                return true;
            if (count > 0 && bytes.size() <= largestWorkerOutput)
                bytes.append(buffer, count);
        }
        return true;
    }

    JSUploadEngine &m_engine;
    double m_timeout;
    Completion m_completion;
    FinishOnceBox m_box;
    std::mutex m_lock; // the launch and the watchdog
    WorkerTask m_task;
    bool m_isLaunched = false;
    bool m_isOverdue = false;
    WatchdogQueue::Token m_watchdog = 0;
    Descriptor m_over;
};

JSUploadEngine::JSUploadEngine(QString workerPath, Time &time)
    : m_workerPath(std::move(workerPath)), m_time(time), m_watchdogQueue("com.tavrine.jsUploadEngine.watchdog"),
      m_queue(QStringLiteral("com.tavrine.jsUploadEngine"), mostRunsAtOnce) {}

JSUploadEngine::~JSUploadEngine() {
    const std::lock_guard guard(m_lock);
    m_isEnding = true;
    for (const std::weak_ptr<Run> &known : m_runs) {
        if (const auto run = known.lock())
            run->abandon();
    }
}

bool JSUploadEngine::remember(const std::shared_ptr<Run> &run) {
    const std::lock_guard guard(m_lock);
    if (m_isEnding)
        return false;
    std::erase_if(m_runs, [](const std::weak_ptr<Run> &known) { return known.expired(); });
    m_runs.push_back(run);
    return true;
}

void JSUploadEngine::run(const QString &script, const QString &imageBase64, const QString &fileName, double timeout,
                         Completion completion) {
    const auto run = std::make_shared<Run>(*this, timeout, std::move(completion));
    if (!remember(run))
        return; // handed in just before the engine went: it starts nothing, and nobody waits for it
    if (!QFileInfo(m_workerPath).isFile())
        return run->finish(failure(QStringLiteral("The upload worker is missing from the app bundle.")));
    std::optional<QByteArray> json = encode(WorkerInput{script, imageBase64, fileName});
    if (!json)
        return run->finish(failure(QStringLiteral("Could not encode the script for the upload worker.")));
    run->scheduleWatchdog();
    if (const int error = run->launch(m_workerPath)) {
        run->cancelWatchdog();
        return run->finish(failure(QStringLiteral("Could not launch the upload worker: ") + qt_error_string(error)));
    }
    run->writeInput(std::move(*json));
    const QByteArray bytes = run->readToEnd();
    run->waitUntilExit();
    run->cancelWatchdog();
    const std::optional<WorkerOutput> output = decodeWorkerOutput(bytes);
    run->finish(output ? runResult(*output) : failure(QStringLiteral("The upload worker exited without a result.")));
}

QString JSUploadEngine::uploadFileName() const {
    const auto milliseconds = static_cast<qint64>(std::floor(m_time.now().secondsSince1970 * 1000));
    return QStringLiteral("screenshot-") +
           QDateTime::fromMSecsSinceEpoch(milliseconds).toString(QStringLiteral("yyyyMMdd-HHmmss")) +
           QStringLiteral(".png");
}

} // namespace tavrine
