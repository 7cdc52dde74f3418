#include "adapters/x11/DragWatch.h"

#include "base/Print.h"

#include <algorithm>

#include <poll.h>
#include <xcb/xinput.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto longestWait = 1s; // for the server, each time
constexpr std::chrono::milliseconds firstPause = 500ms;
constexpr std::chrono::milliseconds longestPause = 30s;
constexpr int mostBatches = 50; // of notices in a second, before they are read more seldom
constexpr std::chrono::milliseconds slowPause = 20ms;
constexpr xcb_keysym_t escapeKey = 0xff1b;

void sleepUntilWoken(const Waker &waker, std::chrono::milliseconds length) {
    pollfd woken{waker.descriptor(), POLLIN, 0};
    ::poll(&woken, 1, static_cast<int>(length.count()));
}

} // namespace

void DragWatch::stop() {
    m_isStopping = true;
    m_waker.wake();
}

void DragWatch::run() {
    auto pause = firstPause;
    while (!m_isStopping) {
        if (open()) {
            pause = firstPause;
            work();
        }
        if (m_isStopping)
            break;
        m_question.reset();
        m_press.clear();
        m_notices = 0;
        publish(false);
        printLine(QStringLiteral("[NotchShelf] Drags of other programs are not seen: no connection to the X server"));
        sleepUntilWoken(m_waker, pause);
        pause = std::min(pause * 2, longestPause);
    }
}

bool DragWatch::open() {
    m_question.reset();
    m_selected = 0;
    m_link = std::make_unique<XcbLink>(longestWait);
    if (!m_link->isOpen())
        return false;
    auto *const connection = m_link->connection();
    const auto *input = m_link->extension(xcb_input_id);
    const auto *fixes = m_link->extension(xcb_xfixes_id);
    // The extensions answer nobody who has not asked for their version, and clients of an earlier one get no raw events
    // while another client holds a grab.
    if (!input || !fixes ||
        !m_link->reply<xcb_input_xi_query_version_reply_t>(xcb_input_xi_query_version(connection, 2, 2)) ||
        !m_link->reply<xcb_xfixes_query_version_reply_t>(xcb_xfixes_query_version(connection, 5, 0)))
        return false;
    m_inputOpcode = input->major_opcode;
    m_selectionNotice = static_cast<std::uint8_t>(fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY);
    m_selection = m_link->atom("XdndSelection");
    m_question = std::make_unique<DragQuestion>(*m_link);
    xcb_xfixes_select_selection_input(connection, m_link->root(), m_selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    return m_link->finish();
}

void DragWatch::work() {
    while (!m_isStopping && m_link->isOpen()) {
        const News news = read();
        take(news);
        if (news.owner)
            slowDown();
        m_question->goOn();
        if (!m_press.empty() && Clock::now() >= m_nextCheck)
            onButtonUp();
        publish(m_state.isDragging);
        select();
        wait();
    }
}

void DragWatch::wait() {
    if (m_link->hasReadEvent())
        return; // it came along with an answer, and the socket tells of it no more
    m_link->flush();
    int limit = -1;
    const auto shorten = [&](Clock::time_point moment) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(moment - Clock::now());
        const int length = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
        limit = limit < 0 ? length : std::min(limit, length);
    };
    if (!m_press.empty())
        shorten(m_nextCheck);
    if (const auto deadline = m_question->deadline())
        shorten(*deadline);
    pollfd descriptors[] = {{m_link->descriptor(), POLLIN, 0}, {m_waker.descriptor(), POLLIN, 0}};
    ::poll(descriptors, std::size(descriptors), limit);
}

DragWatch::News DragWatch::read() {
    News news;
    while (const XcbEvent event = m_link->nextEvent()) {
        if (eventType(*event) == m_selectionNotice) {
            const auto &notice = eventAs<xcb_xfixes_selection_notify_event_t>(*event);
            news.hasEnded = news.hasEnded || notice.owner == XCB_WINDOW_NONE;
            news.owner = notice;
        } else if (eventType(*event) == XCB_GE_GENERIC) {
            readRaw(eventAs<xcb_ge_generic_event_t>(*event), news);
        } else {
            m_question->handle(*event);
        }
    }
    return news;
}

void DragWatch::readRaw(const xcb_ge_generic_event_t &event, News &news) {
    if (event.extension != m_inputOpcode)
        return;
    const auto &raw = reinterpret_cast<const xcb_input_raw_key_press_event_t &>(event);
    if (raw.event_type == XCB_INPUT_RAW_MOTION)
        m_question->onMotion(raw.time);
    else if (raw.event_type == XCB_INPUT_RAW_BUTTON_RELEASE || raw.event_type == XCB_INPUT_RAW_TOUCH_END)
        news.isButtonUp = true;
    else if (raw.event_type == XCB_INPUT_RAW_KEY_PRESS)
        news.hasEnded = news.hasEnded || std::find(m_escape.begin(), m_escape.end(), raw.detail) != m_escape.end();
}

void DragWatch::take(const News &news) {
    if (news.hasEnded) {
        m_question->stop();
        publish(false);
    }
    if (news.isButtonUp)
        onButtonUp();
    if (news.owner && news.owner->owner != XCB_WINDOW_NONE)
        onNewOwner(*news.owner);
}

void DragWatch::onNewOwner(const xcb_xfixes_selection_notify_event_t &owner) {
    if (m_press.empty()) {
        // Selected before the look: a release after it is told.
        m_press[0] = 0;
        select();
        m_press = pressedPointers(*m_link);
        m_nextCheck = Clock::now() + checkPause;
    }
    if (m_press.empty() || ++m_notices > mostNotices)
        return;
    const bool isOurs =
        m_ownWindows != 0 && (owner.owner & ~xcb_get_setup(m_link->connection())->resource_id_mask) == m_ownWindows;
    const bool isSameDrag = m_state.isDragging && !isOurs;
    if (!isSameDrag)
        ++m_state.changeCount;
    m_question->ask(m_selection, owner.owner, owner.timestamp, owner.selection_timestamp);
    publish(!isOurs);
    findEscape();
}

void DragWatch::onButtonUp() {
    m_nextCheck = Clock::now() + checkPause;
    if (!m_press.empty() && isAnyReleased(m_press, pressedPointers(*m_link)))
        endPress();
}

void DragWatch::endPress() {
    m_press.clear();
    m_notices = 0;
    m_question->stop();
    publish(false);
}

void DragWatch::publish(bool isDragging) {
    DragState state{.changeCount = m_state.changeCount,
                    .holdsFileReference = m_question && m_question->isFiles(),
                    .isDragging = isDragging};
    if (state == m_told)
        return;
    m_state = m_told = state;
    m_publish(state);
}

/// The raw events that are needed now, and no others.
void DragWatch::select() {
    std::uint32_t wanted = 0;
    if (!m_press.empty())
        wanted = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS |
                 XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_END;
    if (!m_press.empty() && m_question->wantsMotions())
        wanted |= XCB_INPUT_XI_EVENT_MASK_RAW_MOTION;
    if (wanted == m_selected)
        return;
    m_selected = wanted;
    const struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, wanted};
    xcb_input_xi_select_events(m_link->connection(), m_link->root(), 1, &selection.head);
}

void DragWatch::findEscape() {
    const xcb_setup_t &setup = *xcb_get_setup(m_link->connection());
    const auto map = m_link->reply<xcb_get_keyboard_mapping_reply_t>(xcb_get_keyboard_mapping(
        m_link->connection(), setup.min_keycode, static_cast<std::uint8_t>(setup.max_keycode - setup.min_keycode + 1)));
    if (!map || map->keysyms_per_keycode == 0)
        return;
    m_escape.clear();
    const xcb_keysym_t *symbols = xcb_get_keyboard_mapping_keysyms(map.get());
    const int count = xcb_get_keyboard_mapping_keysyms_length(map.get());
    for (int i = 0; i < count; i += map->keysyms_per_keycode)
        if (symbols[i] == escapeKey)
            m_escape.push_back(static_cast<std::uint8_t>(setup.min_keycode + i / map->keysyms_per_keycode));
}

void DragWatch::slowDown() {
    const auto now = Clock::now();
    if (now - m_second > 1s) {
        m_second = now;
        m_batches = 0;
    }
    if (++m_batches > mostBatches)
        sleepUntilWoken(m_waker, slowPause);
}

} // namespace tavrine
