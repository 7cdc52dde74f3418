#pragma once

#include "adapters/x11/stream/StreamPlan.h"
#include "base/SampleGate.h"

#include <QObject>

namespace tavrine {

/// A stream of the X server's screen. Its work is done on a thread of its own, which begins with the start and is never
/// waited for: a server that does not answer holds up nobody. Lives on the main thread.
class X11ScreenStream final : public QObject, public ScreenStream {
public:
    /// A stop is answered by then, whatever the server does.
    static constexpr std::chrono::seconds longestStop{1};

    /// `plan` is none when there is no such display.
    X11ScreenStream(std::optional<StreamPlan> plan, ScreenStreams::Handlers handlers);
    ~X11ScreenStream() override;

    void startCapture(Completion completion) override;
    void stopCapture(Completion completion) override;

private:
    void onStarted(const std::optional<QString> &error);
    void onEnded(const std::optional<QString> &reason);
    void finishStop();
    void answerLater(Completion completion, const QString &error);

    std::optional<StreamPlan> m_plan;
    ScreenStreams::Handlers m_handlers;
    std::shared_ptr<SampleGate<ScreenSample>> m_session; ///< shared with its thread
    bool m_isStarted = false;
    bool m_isRunning = false;
    Completion m_startCompletion;
    Completion m_stopCompletion;
};

} // namespace tavrine
