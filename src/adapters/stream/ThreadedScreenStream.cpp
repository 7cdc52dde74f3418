#include "adapters/stream/ThreadedScreenStream.h"

#include "base/OnMainThread.h"

#include <QPointer>
#include <QTimer>

#include <thread>
#include <utility>

#include <sys/prctl.h>

namespace tavrine {

ThreadedScreenStream::ThreadedScreenStream(std::optional<StreamPlan> plan, MakeWork makeWork,
                                           ScreenStreams::Handlers handlers)
    : m_plan(std::move(plan)), m_makeWork(std::move(makeWork)), m_handlers(std::move(handlers)) {}

ThreadedScreenStream::~ThreadedScreenStream() {
    if (!m_session)
        return;
    m_session->end();
    m_session->waitUntilSilent(); // for a handler that runs at this moment
}

void ThreadedScreenStream::answerLater(Completion completion, const QString &error) {
    QTimer::singleShot(0, this, [completion = std::move(completion), error] { completion(error); });
}

void ThreadedScreenStream::startCapture(Completion completion) {
    if (m_session)
        return answerLater(std::move(completion), QStringLiteral("The stream was started before."));
    if (!m_plan)
        return answerLater(std::move(completion), QStringLiteral("There is no such display."));
    if (m_plan->area.isEmpty())
        return answerLater(std::move(completion), QStringLiteral("There is nothing to see of that size."));
    m_session = std::make_shared<Session>(m_handlers.didOutputSample);
    m_startCompletion = std::move(completion);
    m_isRunning = true;
    std::thread([plan = *m_plan, makeWork = m_makeWork, session = m_session, self = QPointer(this)] {
        ::prctl(PR_SET_NAME, "screenStream");
        const auto tell = [&](void (ThreadedScreenStream::*what)(const std::optional<QString> &),
                              const std::optional<QString> &words) {
            onMainThread([self, what, words] {
                if (self)
                    (self->*what)(words);
            });
        };
        const auto work = makeWork(plan, *session);
        const auto error = work->open();
        tell(&ThreadedScreenStream::onStarted, error);
        tell(&ThreadedScreenStream::onEnded, error ? std::nullopt : work->run());
    }).detach();
}

void ThreadedScreenStream::onStarted(const std::optional<QString> &error) {
    m_isStarted = !error;
    if (error)
        m_isRunning = false;
    if (const auto completion = std::exchange(m_startCompletion, nullptr))
        completion(error);
}

void ThreadedScreenStream::onEnded(const std::optional<QString> &reason) {
    if (m_stopCompletion)
        return finishStop();
    if (std::exchange(m_isRunning, false) && reason && m_handlers.didStopWithError)
        m_handlers.didStopWithError(*reason);
}

void ThreadedScreenStream::stopCapture(Completion completion) {
    if (!std::exchange(m_isRunning, false))
        return answerLater(std::move(completion), QStringLiteral("The stream does not run."));
    m_stopCompletion = std::move(completion);
    m_session->end();
    QTimer::singleShot(longestStop, this, [this] { finishStop(); });
}

/// The thread has ended, or hangs in the server; samples are over either way.
void ThreadedScreenStream::finishStop() {
    if (!m_stopCompletion)
        return;
    if (!m_session->isSilent()) {
        QTimer::singleShot(std::chrono::milliseconds(10), this, [this] { finishStop(); });
        return;
    }
    const QPointer self(this);
    if (const auto started = std::exchange(m_startCompletion, nullptr))
        started(QStringLiteral("The stream was stopped before it began."));
    if (!self)
        return; // dropped by its owner
    const auto stopped = std::exchange(m_stopCompletion, nullptr);
    stopped(std::nullopt);
}

} // namespace tavrine
