#pragma once

#include "adapters/x11/XcbLink.h"
#include "support/Eventually.h"

#include <chrono>

#include <xcb/screensaver.h>

namespace tavrine::test {

/// The X server's own screen saver, set to come after a second in which nobody touches anything.
class ScreenSaverWatch {
public:
    ScreenSaverWatch() {
        xcb_set_screen_saver(m_link.connection(), 1, 0, XCB_BLANKING_PREFERRED, XCB_EXPOSURES_ALLOWED);
        wake();
    }
    ~ScreenSaverWatch() {
        xcb_set_screen_saver(m_link.connection(), 0, 0, XCB_BLANKING_DEFAULT, XCB_EXPOSURES_DEFAULT);
        wake();
    }
    ScreenSaverWatch(const ScreenSaverWatch &) = delete;
    ScreenSaverWatch &operator=(const ScreenSaverWatch &) = delete;

    void wake() {
        xcb_force_screen_saver(m_link.connection(), XCB_SCREEN_SAVER_RESET);
        m_link.finish();
    }
    [[nodiscard]] bool isBlank() { return info()->state == XCB_SCREENSAVER_STATE_ON; }
    [[nodiscard]] std::chrono::milliseconds idleTime() {
        return std::chrono::milliseconds(info()->ms_since_user_input);
    }
    /// Whether it has come within one and a half of its times.
    [[nodiscard]] bool comes() {
        return eventually([this] { return isBlank(); }, std::chrono::milliseconds(1500));
    }

private:
    XcbReply<xcb_screensaver_query_info_reply_t> info() {
        return m_link.reply<xcb_screensaver_query_info_reply_t>(
            xcb_screensaver_query_info(m_link.connection(), m_link.root()));
    }

    XcbLink m_link{std::chrono::seconds(5)};
};

} // namespace tavrine::test
