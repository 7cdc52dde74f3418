#pragma once

#include "adapters/x11/XcbLink.h"

#include <chrono>

#include <xcb/sync.h>

namespace tavrine {

/// The server's word that the pointer is in use again after a rest.
///
/// It hangs on the counter that the server keeps of each device's rest, of the extension SYNC. The events of XInput, of
/// which monitors hear, have no part in it; and a pointer that a program puts elsewhere sends none, but counts here.
/// One thread, that of the link.
class PointerAlarm {
public:
    using Length = std::chrono::milliseconds;

    /// Rings when something happens after a rest that was longer than `threshold`.
    PointerAlarm(XcbLink &link, Length threshold);

    /// False where the server has no such counter, or did not answer in time.
    [[nodiscard]] bool isSet() const { return m_notice >= 0; }
    /// Once more, where the server was late. True when it is set now and was not before.
    bool setIfLate();
    [[nodiscard]] bool isRinging(const xcb_generic_event_t &event) const { return eventType(event) == m_notice; }

    /// How long the pointer has rested; asked for together with other things. For an alarm that is set.
    [[nodiscard]] xcb_sync_query_counter_cookie_t askForRest() const;
    /// No time at all when the server did not answer.
    [[nodiscard]] Length rest(xcb_sync_query_counter_cookie_t cookie);

private:
    void set();

    XcbLink &m_link;
    const Length m_threshold;
    bool m_isLate = true; ///< or was not asked yet
    xcb_sync_counter_t m_counter = XCB_NONE;
    int m_notice = -1; ///< kind of the event that tells of it
};

} // namespace tavrine
