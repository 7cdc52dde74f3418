#pragma once

#include "adapters/x11/TestOwner.h"
#include "support/Wait.h"

#include <QByteArray>
#include <QPoint>

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace tavrine {

/// A program that drags, played with nothing but the XDND protocol: no pointer moves. What it gives is its owner's
/// matter. Its own side runs on the test's thread.
class TestDrop {
public:
    explicit TestDrop(xcb_window_t target) : m_target(target), m_connection(xcb_connect(nullptr, nullptr)) {
        const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
        m_window = xcb_generate_id(m_connection);
        xcb_create_window(m_connection, 0, m_window, screen->root, -10, -10, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          XCB_COPY_FROM_PARENT, 0, nullptr);
    }
    ~TestDrop() { end(); }
    TestDrop(const TestDrop &) = delete;
    TestDrop &operator=(const TestDrop &) = delete;

    TestOwner owner{"XdndSelection"};

    /// Drags the contents over `place` of the screen, in device pixels. True when the target would take them.
    [[nodiscard]] bool enter(const TestOwner::Contents &contents, QPoint place) {
        owner.own(contents);
        std::vector<xcb_atom_t> types;
        for (const auto &each : contents)
            types.push_back(atom(each.first));
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, atom("XdndTypeList"), XCB_ATOM_ATOM, 32,
                            static_cast<quint32>(types.size()), types.data());
        // As programs do that would rather move.
        const xcb_atom_t actions[] = {atom("XdndActionMove"), atom("XdndActionCopy")};
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, atom("XdndActionList"), XCB_ATOM_ATOM, 32, 2,
                            actions);
        const quint32 more = types.size() > 3 ? 1 : 0;
        types.resize(std::max<size_t>(types.size(), 3));
        send("XdndEnter", {5U << 24U | more, types[0], types[1], types[2]});
        send("XdndPosition", {0, static_cast<quint32>(place.x() << 16 | place.y()), 0, atom("XdndActionMove")});
        return testing::waitUntil([this] { return answered("XdndStatus"); }) && (m_answer.data32[1] & 1) != 0;
    }
    void drop() { send("XdndDrop", {0, 0}); }
    /// True once the target has told the end.
    [[nodiscard]] bool isFinished() { return answered("XdndFinished"); }
    [[nodiscard]] bool isAccepted() const { return (m_answer.data32[1] & 1) != 0; }
    [[nodiscard]] bool isCopied() { return m_answer.data32[2] == atom("XdndActionCopy"); }
    /// As when the program is killed.
    void end() {
        if (m_connection)
            xcb_disconnect(m_connection);
        m_connection = nullptr;
    }

private:
    xcb_atom_t atom(const QByteArray &name) {
        auto *reply = xcb_intern_atom_reply(
            m_connection, xcb_intern_atom(m_connection, 0, static_cast<uint16_t>(name.size()), name.constData()),
            nullptr);
        const xcb_atom_t found = reply ? reply->atom : 0;
        std::free(reply);
        return found;
    }
    void send(const char *name, std::initializer_list<quint32> words) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = m_target;
        event.type = atom(name);
        event.data.data32[0] = m_window;
        std::copy(words.begin(), words.end(), event.data.data32 + 1);
        xcb_send_event(m_connection, 0, m_target, 0, reinterpret_cast<const char *>(&event));
        xcb_flush(m_connection);
    }
    bool answered(const char *name) {
        bool isHere = false;
        while (const std::unique_ptr<xcb_generic_event_t, void (*)(void *)> event{xcb_poll_for_event(m_connection),
                                                                                  &std::free}) {
            const auto &message = reinterpret_cast<const xcb_client_message_event_t &>(*event);
            if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE || message.type != atom(name))
                continue;
            isHere = true;
            m_answer = message.data;
        }
        return isHere;
    }

    xcb_window_t m_target;
    xcb_connection_t *m_connection;
    xcb_window_t m_window = 0;
    xcb_client_message_data_t m_answer{};
};

} // namespace tavrine
