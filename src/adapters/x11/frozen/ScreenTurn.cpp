#include "adapters/x11/frozen/ScreenTurn.h"

#include <QDeadlineTimer>

#include <chrono>
#include <thread>

#include <poll.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

// A program that was told to end does so within a few milliseconds; one that hangs is not waited for.
constexpr auto longestWaitForOther = 400ms;
// What windows without a compositor need to paint what an overlay covered: 2 to 5 frames.
constexpr auto repaintTime = 80ms;

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
    const auto owner = link.reply<xcb_get_selection_owner_reply_t>(xcb_get_selection_owner(connection, m_selection));
    const xcb_window_t other = owner ? owner->owner : static_cast<xcb_window_t>(XCB_NONE);
    if (other) {
        const quint32 events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection, other, XCB_CW_EVENT_MASK, &events);
    }
    xcb_set_selection_owner(connection, m_window, m_selection, XCB_CURRENT_TIME);
    if (other)
        waitForOther(other);
    waitForRepaint();
}

void ScreenTurn::waitForOther(xcb_window_t other) {
    const QDeadlineTimer deadline(longestWaitForOther);
    xcb_flush(m_link.connection());
    while (!deadline.hasExpired() && m_link.isOpen()) {
        while (const XcbEvent event = m_link.nextEvent()) {
            const bool isGone = (event->response_type & 0x7f) == XCB_DESTROY_NOTIFY &&
                                reinterpret_cast<const xcb_destroy_notify_event_t &>(*event).window == other;
            // An error belongs to the other window as well: it was gone before it could be watched.
            if (isGone || event->response_type == 0)
                return;
        }
        pollfd descriptor{xcb_get_file_descriptor(m_link.connection()), POLLIN, 0};
        ::poll(&descriptor, 1, static_cast<int>(deadline.remainingTime()));
    }
}

void ScreenTurn::waitForRepaint() {
    const auto ended = m_link.words(m_link.ask(m_link.root(), m_endedAt));
    if (ended.empty())
        return;
    const std::chrono::milliseconds since(monotonicMs() - ended.front());
    if (since < repaintTime)
        std::this_thread::sleep_for(repaintTime - since);
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
