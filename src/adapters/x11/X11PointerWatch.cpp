#include "adapters/x11/X11PointerWatch.h"

#include "adapters/x11/XcbLink.h"
#include "base/Time.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <tuple>
#include <utility>

#include <pthread.h>

namespace tavrine {
namespace {

constexpr XcbLink::Wait longestWait{200}; // what takes longer is held by another program, and looked at the next time

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
    std::atomic<bool> tellsAll = false;

    void end() {
        m_handler = nullptr; // of the main thread, which calls it
        {
            const std::lock_guard lock(m_mutex);
            m_isOver = true;
        }
        m_ending.notify_all();
    }

    /// On the thread.
    void run(Seconds interval) {
        XcbLink link(longestWait);
        auto next = std::chrono::steady_clock::now();
        const auto step = std::chrono::duration_cast<std::chrono::steady_clock::duration>(interval);
        while (link.isOpen()) {
            look(link);
            while (link.nextEvent()) {
            }
            next = std::max(next + step, std::chrono::steady_clock::now());
            std::unique_lock lock(m_mutex);
            if (m_ending.wait_until(lock, next, [this] { return m_isOver; }))
                return;
        }
    }

private:
    void look(XcbLink &link) {
        const auto answer = link.reply<xcb_query_pointer_reply_t>(xcb_query_pointer(link.connection(), link.root()));
        if (!answer)
            return;
        lastLook = secondsNow();
        const auto found =
            std::tuple<int, int, unsigned int>(answer->root_x, answer->root_y, answer->mask & everyButton);
        const bool isNew = std::exchange(m_last, found) != found;
        const std::lock_guard lock(m_mutex); // after the end there may be no main queue
        if ((isNew || tellsAll) && !m_isOver && !m_isTold.exchange(true))
            m_time.async([self = shared_from_this()] { self->tell(); });
    }
    /// On the main thread. One that is told does not wait for the next.
    void tell() {
        m_isTold = false;
        if (const auto handler = m_handler)
            handler();
    }

    Time &m_time;
    std::function<void()> m_handler;
    std::atomic<bool> m_isTold = false;
    std::optional<std::tuple<int, int, unsigned int>> m_last;
    std::mutex m_mutex;
    std::condition_variable m_ending;
    bool m_isOver = false;
};

X11PointerWatch::X11PointerWatch(Time &time, Seconds interval, std::function<void()> handler)
    : m_looking(std::make_shared<Looking>(time, std::move(handler))) {
    std::thread thread([looking = m_looking, interval] { looking->run(interval); });
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
    m_looking->tellsAll = tellsAll;
}

} // namespace tavrine
