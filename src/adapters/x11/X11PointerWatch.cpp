#include "adapters/x11/X11PointerWatch.h"

#include "adapters/x11/PointerAlarm.h"
#include "base/Time.h"
#include "base/Waker.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <thread>
#include <tuple>
#include <utility>

#include <poll.h>
#include <pthread.h>

namespace tavrine {
namespace {

using Clock = std::chrono::steady_clock;

constexpr XcbLink::Wait longestAnswer{200}; // what takes longer is held by another program, and looked at the next time
constexpr std::chrono::milliseconds longestRest{1000}; // between two looks, for what the alarm may have missed

constexpr unsigned int everyButton =
    XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3 | XCB_BUTTON_MASK_4 | XCB_BUTTON_MASK_5;

double secondsNow() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

} // namespace

/// What the thread and the main thread share; lives as long as either needs it.
class X11PointerWatch::Looking : public std::enable_shared_from_this<Looking> {
public:
    Looking(Time &time, std::function<void()> handler) : m_time(time), m_handler(std::move(handler)) {}

    std::atomic<double> lastLook = secondsNow();

    void setTellsAll(bool tellsAll) {
        if (!m_tellsAll.exchange(tellsAll) && tellsAll)
            m_waker.wake();
    }

    void end() {
        m_handler = nullptr; // of the main thread, which calls it
        {
            const std::lock_guard lock(m_mutex);
            m_isOver = true;
        }
        m_waker.wake();
    }

    /// On the thread.
    void run(Clock::duration interval) {
        XcbLink link(longestAnswer);
        if (!link.isOpen())
            return;
        PointerAlarm alarm(link, std::chrono::floor<PointerAlarm::Length>(interval / 2));
        m_isAlarmTrusted = alarm.isSet();
        auto next = Clock::now();
        while (link.isOpen() && !m_isOver) {
            const Look found = look(link, alarm);
            if (found.isThere && alarm.setIfLate())
                m_isAlarmTrusted = true;
            if (mayRest(found, interval)) {
                sleep(&link, longestRest);
                next = Clock::now();
            } else {
                next = std::max(next + interval, Clock::now());
                sleep(nullptr, std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()));
            }
        }
    }

private:
    struct Look {
        bool isThere = false; ///< the server has answered
        bool isNew = false;
        bool hasRung = false;
        PointerAlarm::Length rest{0};
    };

    Look look(XcbLink &link, PointerAlarm &alarm) {
        Look result;
        const bool asksForRest = m_isAlarmTrusted && !m_tellsAll;
        const auto restCookie = asksForRest ? alarm.askForRest() : xcb_sync_query_counter_cookie_t{};
        const auto answer = link.reply<xcb_query_pointer_reply_t>(xcb_query_pointer(link.connection(), link.root()));
        if (asksForRest)
            result.rest = alarm.rest(restCookie);
        while (const XcbEvent event = link.nextEvent())
            result.hasRung = result.hasRung || alarm.isRinging(*event);
        if (!answer)
            return result;
        lastLook = secondsNow();
        result.isThere = true;
        const auto found =
            std::tuple<int, int, unsigned int>(answer->root_x, answer->root_y, answer->mask & everyButton);
        result.isNew = std::exchange(m_last, found) != found;
        const std::lock_guard lock(m_mutex); // after the end there may be no main queue
        if ((result.isNew || m_tellsAll) && !m_isOver && !m_isTold.exchange(true))
            m_time.async([self = shared_from_this()] { self->tell(); });
        return result;
    }

    /// Whether nothing needs a look before the alarm rings. One that kept silent is trusted again when it rings.
    bool mayRest(const Look &look, Clock::duration interval) {
        if (look.hasRung)
            m_isAlarmTrusted = true;
        else if (look.isNew && m_isResting)
            m_isAlarmTrusted = false;
        m_isResting = m_isAlarmTrusted && !look.isNew && !look.hasRung && look.rest >= interval && !m_tellsAll;
        return m_isResting;
    }

    /// Until something comes over `link`, where there is one, or the main thread has a word, or the time is over.
    void sleep(XcbLink *link, std::chrono::milliseconds longest) const {
        if (link && link->hasReadEvent())
            return; // it came along with an answer, and the socket tells of it no more
        pollfd descriptors[] = {{m_waker.descriptor(), POLLIN, 0}, {link ? link->descriptor() : -1, POLLIN, 0}};
        ::poll(descriptors, std::size(descriptors), static_cast<int>(longest.count()));
        if (descriptors[0].revents)
            m_waker.clear();
    }

    /// On the main thread. One that is told does not wait for the next.
    void tell() {
        m_isTold = false;
        if (const auto handler = m_handler)
            handler();
    }

    Time &m_time;
    std::function<void()> m_handler;
    std::atomic<bool> m_tellsAll = false;
    std::atomic<bool> m_isTold = false;
    std::atomic<bool> m_isOver = false;
    std::mutex m_mutex;
    Waker m_waker;

    // The thread's own from here.
    std::optional<std::tuple<int, int, unsigned int>> m_last;
    bool m_isAlarmTrusted = false;
    bool m_isResting = false;
};

X11PointerWatch::X11PointerWatch(Time &time, Seconds interval, std::function<void()> handler)
    : m_looking(std::make_shared<Looking>(time, std::move(handler))) {
    std::thread thread(
        [looking = m_looking, step = std::chrono::duration_cast<Clock::duration>(interval)] { looking->run(step); });
    pthread_setname_np(thread.native_handle(), "notchmonitor");
    thread.detach();
}

X11PointerWatch::~X11PointerWatch() {
    m_looking->end();
}

Date X11PointerWatch::lastLook() const {
    return {m_looking->lastLook};
}

void X11PointerWatch::setTellsAll(bool tellsAll) {
    m_looking->setTellsAll(tellsAll);
}

} // namespace tavrine
