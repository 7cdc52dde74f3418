#pragma once

#include "adapters/stream/StreamPlan.h"
#include "base/SampleGate.h"

#include <QObject>

namespace tavrine {

/// What a stream does on its thread, in whose hands it is from the beginning to the end.
class StreamWork {
public:
    virtual ~StreamWork() = default;
    /// Why it cannot run, in words.
    [[nodiscard]] virtual std::optional<QString> open() = 0;
    /// Until the session is over, or it cannot go on: why, in words.
    virtual std::optional<QString> run() = 0;
};

/// A stream whose work is done on a thread of its own, which begins with the start and is never waited for: a server
/// that does not answer holds up nobody. Lives on the main thread.
class ThreadedScreenStream final : public QObject, public ScreenStream {
public:
    /// A stop is answered by then, whatever the server does.
    static constexpr std::chrono::seconds longestStop{1};

    using Session = SampleGate<ScreenSample>;
    /// Called on the thread; the session outlives what it makes.
    using MakeWork = std::function<std::unique_ptr<StreamWork>(const StreamPlan &plan, Session &session)>;

    /// `plan` is none when there is no such display.
    ThreadedScreenStream(std::optional<StreamPlan> plan, MakeWork makeWork, ScreenStreams::Handlers handlers);
    ~ThreadedScreenStream() override;

    void startCapture(Completion completion) override;
    void stopCapture(Completion completion) override;

private:
    void onStarted(const std::optional<QString> &error);
    void onEnded(const std::optional<QString> &reason);
    void finishStop();
    void answerLater(Completion completion, const QString &error);

    std::optional<StreamPlan> m_plan;
    MakeWork m_makeWork;
    ScreenStreams::Handlers m_handlers;
    std::shared_ptr<Session> m_session; ///< shared with its thread
    bool m_isStarted = false;
    bool m_isRunning = false;
    Completion m_startCompletion;
    Completion m_stopCompletion;
};

} // namespace tavrine
