#pragma once

#include "adapters/cast/CastSource.h"

#include <atomic>
#include <thread>

namespace tavrine::test {

/// A source of casts that begins on a stream's thread, for a display of 200x100 without a scale.
class OpeningCast {
public:
    using Make = std::function<std::unique_ptr<CastSource>()>;

    explicit OpeningCast(const Make &make) {
        m_thread = std::thread([this, make] {
            ScreenStreamConfiguration configuration;
            configuration.sourceRect = QRectF(0, 0, 20, 10);
            configuration.width = 20;
            configuration.height = 10;
            const StreamPlan plan{.area = QRect(0, 0, 20, 10),
                                  .keptOut = {},
                                  .showsPointer = false,
                                  .interval = configuration.minimumFrameInterval,
                                  .queueDepth = 2,
                                  .output = QStringLiteral("played")};
            const auto source = make();
            const auto opened = source->open(plan, configuration, m_session);
            m_isRefused = std::holds_alternative<QString>(opened);
            m_hasReturned = true;
        });
    }
    ~OpeningCast() {
        m_session.end();
        m_thread.join();
    }
    OpeningCast(const OpeningCast &) = delete;
    OpeningCast &operator=(const OpeningCast &) = delete;

    void stop() { m_session.end(); }
    [[nodiscard]] bool hasReturned() const { return m_hasReturned; }
    [[nodiscard]] bool isRefused() const { return m_isRefused; }

private:
    ThreadedScreenStream::Session m_session{nullptr};
    std::atomic<bool> m_isRefused = false;
    std::atomic<bool> m_hasReturned = false;
    std::thread m_thread;
};

} // namespace tavrine::test
