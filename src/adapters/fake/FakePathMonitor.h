#pragma once

#include "adapters/fake/VirtualTime.h"
#include "ports/PathMonitor.h"

#include <optional>
#include <utility>

namespace tavrine {

/// A way out that a test opens and closes. It is open at first; what changes is told in the next turn.
class FakePathMonitor final : public PathMonitor {
public:
    explicit FakePathMonitor(VirtualTime &time) : m_time(time) {}

    void start(Handler pathUpdateHandler) override {
        m_handler = std::move(pathUpdateHandler);
        m_told.reset();
        tellSoon();
    }

    void setStatus(PathStatus status) {
        m_status = status;
        tellSoon();
    }

private:
    void tellSoon() {
        if (m_handler && !std::exchange(m_isTelling, true))
            m_time.async([this] {
                m_isTelling = false;
                if (std::exchange(m_told, m_status) != m_status)
                    m_handler(m_status);
            });
    }

    VirtualTime &m_time;
    Handler m_handler;
    PathStatus m_status = PathStatus::satisfied;
    std::optional<PathStatus> m_told;
    bool m_isTelling = false;
};

} // namespace tavrine
