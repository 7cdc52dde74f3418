#pragma once

#include <cstdint>
#include <cstdlib>

#include <xcb/xcb.h>
#include <xcb/xinput.h>

namespace tavrine::testing {

/// The times of the server at which keys and buttons go down, from a connection of its own.
class RawPresses {
public:
    RawPresses() : m_connection(xcb_connect(nullptr, nullptr)) {
        const struct {
            xcb_input_event_mask_t head{XCB_INPUT_DEVICE_ALL_MASTER, 1};
            std::uint32_t mask = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS;
        } selection;
        std::free(
            xcb_input_xi_query_version_reply(m_connection, xcb_input_xi_query_version(m_connection, 2, 2), nullptr));
        const auto root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        std::free(xcb_request_check(m_connection,
                                    xcb_input_xi_select_events_checked(m_connection, root, 1, &selection.head)));
    }
    ~RawPresses() { xcb_disconnect(m_connection); }
    RawPresses(const RawPresses &) = delete;
    RawPresses &operator=(const RawPresses &) = delete;

    /// The next one's; waits for it.
    [[nodiscard]] std::uint32_t next() {
        while (auto *event = xcb_wait_for_event(m_connection)) {
            const bool isPress = (event->response_type & 0x7f) == XCB_GE_GENERIC; // not of a keyboard that changes
            const auto time = reinterpret_cast<xcb_input_raw_key_press_event_t *>(event)->time;
            std::free(event);
            if (isPress)
                return time;
        }
        return 0;
    }

private:
    xcb_connection_t *m_connection;
};

} // namespace tavrine::testing
