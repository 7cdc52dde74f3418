#pragma once

#include "adapters/pasteboard/DroppedForms.h"
#include "adapters/pasteboard/SelectionLimits.h"
#include "adapters/wayland/DragOffers.h"

#include <chrono>

namespace tavrine {

/// Reads a drop out of its offer. Lives on the thread that reads, for one drop.
class OfferedDrop {
public:
    /// Gives up once `stop` can be read. `flush` sends what was asked for.
    OfferedDrop(std::shared_ptr<const DragOffers::Offer> offer, const SelectionLimits &limits,
                std::function<void()> flush, int stop);

    [[nodiscard]] DroppedContent read();

private:
    using TimePoint = std::chrono::steady_clock::time_point;

    [[nodiscard]] std::optional<DroppedForm> fetch(const QByteArray &type);

    const std::shared_ptr<const DragOffers::Offer> m_offer;
    const SelectionLimits m_limits;
    const std::function<void()> m_flush;
    const TimePoint m_end;
    const int m_stop;
    bool m_isLost = false; ///< the program missed a deadline: it is asked for nothing more
    qsizetype m_bytes = 0;
};

} // namespace tavrine
