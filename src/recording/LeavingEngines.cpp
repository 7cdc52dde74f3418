#include "recording/LeavingEngines.h"

#include "base/Time.h"

#include <QPointer>

#include <utility>

namespace tavrine {

void LeavingEngines::stop(const Engine &engine, ScreenRecordingEngine::StopCompletion log, Then then) {
    m_engines.push_back(engine);
    engine->stop([this, self = QPointer(this), &time = m_time, engine = engine.get(), log = std::move(log),
                  then = std::move(then)](const auto &path, const auto &error) {
        log(path, error);
        time.async([this, self, engine, then] {
            if (!self)
                return;
            then(*engine);
            drop(engine);
        });
    });
}

void LeavingEngines::stop(const Engine &engine) {
    stop(
        engine, [](const auto &, const auto &) {}, [](const auto &) {});
}

void LeavingEngines::dropSoon(const Engine &engine) {
    m_engines.push_back(engine);
    m_time.async(this, [this, gone = engine.get()] { drop(gone); });
}

void LeavingEngines::drop(const ScreenRecordingEngine *gone) {
    std::erase_if(m_engines, [gone](const Engine &one) { return one.get() == gone; });
}

} // namespace tavrine
