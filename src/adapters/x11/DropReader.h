#pragma once

#include "adapters/pasteboard/DroppedForms.h"
#include "adapters/pasteboard/SelectionLimits.h"

#include <QByteArray>
#include <QList>

#include <chrono>
#include <optional>

#include <xcb/xcb.h>

namespace tavrine {

class XConnection;

/// What the drop's events told of it.
struct Drop {
    xcb_window_t source = XCB_WINDOW_NONE;
    xcb_timestamp_t time = XCB_CURRENT_TIME; ///< by which the dragging program knows which of its drags is asked for
    QList<std::uint32_t> types; ///< as atoms; all of them stand on the source where there are more than three
    bool hasMoreTypes = false;
    QList<QByteArray> names; ///< of the types, for a drop without atoms
};

/// Asks the program that drags for what was dropped, on a connection of its own. Lives on the thread that reads, for
/// one drop.
class DropReader {
public:
    /// Gives up once `stop` can be read.
    DropReader(Drop drop, const SelectionLimits &limits, int stop);

    [[nodiscard]] DroppedContent read();

private:
    using TimePoint = std::chrono::steady_clock::time_point;

    [[nodiscard]] QList<QByteArray> targets(XConnection &connection) const;
    [[nodiscard]] std::optional<DroppedForm> fetch(XConnection &connection, const QByteArray &target);
    /// False when there is no more to wait for.
    [[nodiscard]] bool waitForEvents(XConnection &connection, TimePoint until) const;

    const Drop m_drop;
    const SelectionLimits m_limits;
    const TimePoint m_end;
    const int m_stop;
    bool m_isLost = false; ///< the program is gone, or missed a deadline: it is asked for nothing more
    qsizetype m_bytes = 0;
};

} // namespace tavrine
