#pragma once

#include "support/TestKeyboard.h"
#include "support/Wait.h"

#include <QElapsedTimer>
#include <QObject>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

#include <sys/socket.h>
#include <xcb/xcb.h>

namespace tavrine::testing {

/// From the press of a key, with Super and Shift, to the word of it, in milliseconds.
class PressTimes {
public:
    void take(TestKeyboard &keyboard, int keycode) {
        keyboard.down(key::leftSuper);
        keyboard.down(key::leftShift);
        m_clock.start();
        m_isAwaited = true;
        keyboard.down(keycode);
        while (m_isAwaited && m_clock.elapsed() < 10'000)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
        keyboard.up(keycode);
        keyboard.up(key::leftShift);
        keyboard.up(key::leftSuper);
        (void)waitUntil([] { return false; }, std::chrono::milliseconds(5));
    }
    void told() {
        if (std::exchange(m_isAwaited, false)) // a key that is held for long repeats
            m_times.push_back(static_cast<double>(m_clock.nsecsElapsed()) / 1e6);
    }
    [[nodiscard]] size_t count() const { return m_times.size(); }
    [[nodiscard]] double median() {
        std::sort(m_times.begin(), m_times.end());
        return m_times.empty() ? 0.0 : m_times[m_times.size() / 2];
    }

private:
    QElapsedTimer m_clock;
    std::vector<double> m_times;
    bool m_isAwaited = false;
};

/// The least that a hot key can be: a grab, a thread that waits for its presses, and word to the main thread.
class BareHotKey {
public:
    BareHotKey(int keycode, int state, const std::function<void()> &onPress)
        : m_connection(xcb_connect(nullptr, nullptr)) {
        const auto root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        std::free(
            xcb_request_check(m_connection, xcb_grab_key_checked(m_connection, 1, root, static_cast<uint16_t>(state),
                                                                 static_cast<uint8_t>(keycode), XCB_GRAB_MODE_ASYNC,
                                                                 XCB_GRAB_MODE_ASYNC)));
        m_thread = std::thread([this, onPress] {
            while (auto *event = xcb_wait_for_event(m_connection)) {
                if ((event->response_type & 0x7f) == XCB_KEY_PRESS)
                    QMetaObject::invokeMethod(&m_mainThread, onPress, Qt::QueuedConnection);
                std::free(event);
            }
        });
    }
    ~BareHotKey() {
        ::shutdown(xcb_get_file_descriptor(m_connection), SHUT_RDWR); // which ends the wait
        m_thread.join();
        xcb_disconnect(m_connection);
    }
    BareHotKey(const BareHotKey &) = delete;
    BareHotKey &operator=(const BareHotKey &) = delete;

private:
    xcb_connection_t *m_connection;
    QObject m_mainThread;
    std::thread m_thread;
};

} // namespace tavrine::testing
