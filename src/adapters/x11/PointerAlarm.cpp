#include "adapters/x11/PointerAlarm.h"

#include <string_view>

namespace tavrine {
namespace {

/// The first pointer of the server, which is everybody's who does not choose another; and where devices are not counted
/// apart, all of them.
constexpr std::string_view counterOfPointer = "DEVICEIDLETIME 2";
constexpr std::string_view counterOfAll = "IDLETIME";

/// None when the server has none, or did not answer in time.
xcb_sync_counter_t findCounter(XcbLink &link) {
    const auto answer =
        link.reply<xcb_sync_list_system_counters_reply_t>(xcb_sync_list_system_counters(link.connection()));
    if (!answer)
        return XCB_NONE;
    xcb_sync_counter_t all = XCB_NONE;
    for (auto each = xcb_sync_list_system_counters_counters_iterator(answer.get()); each.rem > 0;
         xcb_sync_systemcounter_next(&each)) {
        // The library takes the name for two bytes later than it is: it counts the padding of its own structure.
        constexpr size_t bytesBeforeName = 14;
        const std::string_view name(reinterpret_cast<const char *>(each.data) + bytesBeforeName, each.data->name_len);
        if (name == counterOfPointer)
            return each.data->counter;
        if (name == counterOfAll)
            all = each.data->counter;
    }
    return all;
}

} // namespace

PointerAlarm::PointerAlarm(XcbLink &link, Length threshold) : m_link(link), m_threshold(threshold) {
    static_cast<void>(setIfLate());
}

bool PointerAlarm::setIfLate() {
    if (!std::exchange(m_isLate, false))
        return false;
    static_cast<void>(m_link.takeIsLate());
    set();
    m_isLate = m_link.takeIsLate() && !isSet();
    return isSet();
}

void PointerAlarm::set() {
    const auto *const sync = m_link.extension(xcb_sync_id);
    if (!sync || !m_link.reply<xcb_sync_initialize_reply_t>(
                     xcb_sync_initialize(m_link.connection(), XCB_SYNC_MAJOR_VERSION, XCB_SYNC_MINOR_VERSION)))
        return;
    m_counter = findCounter(m_link);
    if (m_counter == XCB_NONE)
        return;
    m_notice = sync->first_event + XCB_SYNC_ALARM_NOTIFY;
    // Each time the counter falls to the threshold or below, for as long as the alarm is there.
    const std::uint32_t values[] = {m_counter,
                                    XCB_SYNC_VALUETYPE_ABSOLUTE,
                                    0,
                                    static_cast<std::uint32_t>(m_threshold.count()),
                                    XCB_SYNC_TESTTYPE_NEGATIVE_TRANSITION,
                                    0,
                                    0,
                                    1};
    xcb_sync_create_alarm(m_link.connection(), m_link.newId(),
                          XCB_SYNC_CA_COUNTER | XCB_SYNC_CA_VALUE_TYPE | XCB_SYNC_CA_VALUE | XCB_SYNC_CA_TEST_TYPE |
                              XCB_SYNC_CA_DELTA | XCB_SYNC_CA_EVENTS,
                          values);
}

xcb_sync_query_counter_cookie_t PointerAlarm::askForRest() const {
    return xcb_sync_query_counter(m_link.connection(), m_counter);
}

PointerAlarm::Length PointerAlarm::rest(xcb_sync_query_counter_cookie_t cookie) {
    const auto answer = m_link.reply<xcb_sync_query_counter_reply_t>(cookie);
    if (!answer)
        return Length(0);
    const auto high = static_cast<std::uint64_t>(static_cast<std::uint32_t>(answer->counter_value.hi));
    return Length(static_cast<std::int64_t>(high << 32U | answer->counter_value.lo));
}

} // namespace tavrine
