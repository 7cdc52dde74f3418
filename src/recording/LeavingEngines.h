#pragma once

#include "recording/ScreenRecordingEngine.h"

#include <QObject>

#include <vector>

namespace tavrine {

/// The engines that were told to stop, kept until they have answered. Belongs to the recorder; main thread.
class LeavingEngines final : public QObject {
    Q_OBJECT

public:
    using Engine = std::shared_ptr<ScreenRecordingEngine>;
    using Then = std::function<void(const ScreenRecordingEngine &engine)>;

    explicit LeavingEngines(Time &time) : m_time(time) {}

    /// `log` is called with the engine's answer, on its thread, and `then` with the engine in a later turn here.
    void stop(const Engine &engine, ScreenRecordingEngine::StopCompletion log, Then then);
    void stop(const Engine &engine);
    /// Drops it in a later turn, for it may be what calls.
    void dropSoon(const Engine &engine);

private:
    void drop(const ScreenRecordingEngine *gone);

    Time &m_time;
    std::vector<Engine> m_engines;
};

} // namespace tavrine
