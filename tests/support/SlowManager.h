#pragma once

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <thread>

#include <sys/socket.h>
#include <xcb/xcb.h>

namespace tavrine::testing {

/// A window manager that looks at each press before the window under it gets it, and takes its time: the pointer stands
/// still for all windows meanwhile. On a thread and a connection of its own.
class SlowManager {
public:
    explicit SlowManager(std::chrono::milliseconds delay) : m_connection(xcb_connect(nullptr, nullptr)) {
        const auto root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        std::free(
            xcb_request_check(m_connection, xcb_grab_button_checked(m_connection, 0, root, XCB_EVENT_MASK_BUTTON_PRESS,
                                                                    XCB_GRAB_MODE_SYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE,
                                                                    XCB_NONE, XCB_BUTTON_INDEX_1, XCB_MOD_MASK_ANY)));
        m_thread = std::thread([this, delay] {
            while (auto *event = xcb_wait_for_event(m_connection)) {
                if ((event->response_type & 0x7f) == XCB_BUTTON_PRESS) {
                    std::this_thread::sleep_for(delay);
                    xcb_allow_events(m_connection, XCB_ALLOW_REPLAY_POINTER, XCB_CURRENT_TIME);
                    xcb_flush(m_connection);
                }
                std::free(event);
            }
        });
    }
    ~SlowManager() {
        ::shutdown(xcb_get_file_descriptor(m_connection), SHUT_RDWR); // which ends the wait
        m_thread.join();
        xcb_disconnect(m_connection);
    }
    SlowManager(const SlowManager &) = delete;
    SlowManager &operator=(const SlowManager &) = delete;

private:
    xcb_connection_t *m_connection;
    std::thread m_thread;
};

} // namespace tavrine::testing
