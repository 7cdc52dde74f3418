#pragma once

#include "adapters/pasteboard/SelectionLimits.h"
#include "adapters/x11/DroppedForms.h"

#include <QByteArray>
#include <QList>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

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

/// Asks the program that drags for what was dropped, on a thread and a connection of its own. Made within the drop's
/// event, on the main thread, which ends it.
class DropReader {
public:
    /// `onLate` is called on the thread, after `waitFor` came back without the content.
    DropReader(Drop drop, const SelectionLimits &limits, std::function<void()> onLate);
    ~DropReader();
    DropReader(const DropReader &) = delete;
    DropReader &operator=(const DropReader &) = delete;

    /// The content, or none when it is not here in time: then `onLate` follows. To be called once.
    [[nodiscard]] std::optional<DroppedContent> waitFor(std::chrono::milliseconds longest);
    /// After `onLate`.
    [[nodiscard]] DroppedContent take();

private:
    using TimePoint = std::chrono::steady_clock::time_point;

    void run();
    [[nodiscard]] QList<QByteArray> targets(XConnection &connection) const;
    [[nodiscard]] std::optional<DroppedForm> fetch(XConnection &connection, const QByteArray &target);
    /// False when there is no more to wait for.
    [[nodiscard]] bool waitForEvents(XConnection &connection, TimePoint until) const;

    const Drop m_drop;
    const SelectionLimits m_limits;
    const std::function<void()> m_onLate;
    const TimePoint m_end;
    int m_stop; ///< readable when nobody waits any more

    // The thread's own.
    bool m_isLost = false; ///< the program is gone, or missed a deadline: it is asked for nothing more
    qsizetype m_bytes = 0;

    std::mutex m_mutex;
    std::condition_variable m_isHere;
    std::optional<DroppedContent> m_content;
    bool m_isLate = false;

    std::thread m_thread;
};

} // namespace tavrine
