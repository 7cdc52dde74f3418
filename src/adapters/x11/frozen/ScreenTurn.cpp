#include "adapters/x11/frozen/ScreenTurn.h"

#include <algorithm>
#include <chrono>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

// A program that was told to end does so within a few milliseconds; one that hangs is not waited for.
constexpr auto longestWaitForOther = 400ms;
// What windows without a compositor need to paint what an overlay covered: 2 to 5 frames.
constexpr auto repaintTime = 80ms;
constexpr auto untilNextLook = 5ms;

/// Milliseconds of a clock that all programs of the machine share. Wraps around; only differences count.
quint32 monotonicMs() {
    return static_cast<quint32>(
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count());
}

} // namespace

ScreenTurn::ScreenTurn(XcbLink &link) : m_link(link), m_window(link.newId()) {
    const std::string name = "_TAVRINE_SCREEN_TURN_S" + std::to_string(link.screenNumber());
    m_selection = link.atom(name);
    m_endedAt = link.atom("_TAVRINE_SCREEN_TURN_ENDED");
    auto *const connection = link.connection();
    xcb_create_window(connection, 0, m_window, link.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    m_other = link.selectionOwner(m_selection);
    if (m_other) {
        const quint32 events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection, m_other, XCB_CW_EVENT_MASK, &events);
    }
    xcb_set_selection_owner(connection, m_window, m_selection, XCB_CURRENT_TIME);
    link.flush();
    m_otherDeadline = std::chrono::steady_clock::now() + longestWaitForOther;
}

bool ScreenTurn::isOtherGone() {
    if (!m_link.isOpen() || std::chrono::steady_clock::now() >= m_otherDeadline)
        return true;
    while (const XcbEvent event = m_link.nextEvent()) {
        const bool isItsEnd =
            eventType(*event) == XCB_DESTROY_NOTIFY && eventAs<xcb_destroy_notify_event_t>(*event).window == m_other;
        // An error belongs to the other window as well: it was gone before it could be watched.
        if (isItsEnd || event->response_type == 0)
            return true;
    }
    return false;
}

std::chrono::milliseconds ScreenTurn::timeToWait() {
    if (m_other != XCB_WINDOW_NONE && !isOtherGone())
        return untilNextLook;
    m_other = XCB_WINDOW_NONE;
    const auto ended = m_link.words(m_link.ask(m_link.root(), m_endedAt));
    const std::chrono::milliseconds since(ended.empty() ? quint32{repaintTime.count()} : monotonicMs() - ended.front());
    return std::max(repaintTime - since, 0ms);
}

bool ScreenTurn::isLostBy(const xcb_generic_event_t &event) const {
    return (event.response_type & 0x7f) == XCB_SELECTION_CLEAR &&
           reinterpret_cast<const xcb_selection_clear_event_t &>(event).selection == m_selection;
}

void ScreenTurn::noteEnd() {
    const quint32 now = monotonicMs();
    xcb_change_property(m_link.connection(), XCB_PROP_MODE_REPLACE, m_link.root(), m_endedAt, XCB_ATOM_CARDINAL, 32, 1,
                        &now);
}

} // namespace tavrine
