#pragma once

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <thread>

#include <xcb/xcb.h>

namespace tavrine::testing {

/// Another program that keeps the server to itself for a while, on a thread of its own: the toolkit of the test waits
/// for the server without end. Its end waits for that.
class ServerHolder {
public:
    ServerHolder() : m_connection(xcb_connect(nullptr, nullptr)) {}
    ~ServerHolder() {
        wait();
        xcb_disconnect(m_connection);
    }
    ServerHolder(const ServerHolder &) = delete;
    ServerHolder &operator=(const ServerHolder &) = delete;

    /// For that long. Returns when the server is held.
    void hold(std::chrono::milliseconds length, bool changesKeyboard) {
        xcb_grab_server(m_connection);
        finish();
        if (changesKeyboard)
            changeKeyboard();
        m_thread = std::thread([this, length] {
            std::this_thread::sleep_for(length);
            xcb_ungrab_server(m_connection);
            finish();
        });
    }
    void wait() {
        if (m_thread.joinable())
            m_thread.join();
    }
    /// Until `letGo`.
    void holdAlone() {
        xcb_grab_server(m_connection);
        finish();
    }
    /// Until `letGo`, with a change of the keyboard that the others hear of first thing.
    void holdWithChange() {
        xcb_grab_server(m_connection);
        finish();
        changeKeyboard();
    }
    void letGo() {
        xcb_ungrab_server(m_connection);
        finish();
    }
    /// Everybody is told that the keyboard's map is another one.
    void changeKeyboard() {
        const std::uint32_t symbol = 0x1008ff41; // of a key that no keyboard has
        xcb_change_keyboard_mapping(m_connection, 1, 248, 1, &symbol);
        finish();
    }

private:
    void finish() { std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr)); }

    xcb_connection_t *m_connection;
    std::thread m_thread;
};

} // namespace tavrine::testing
