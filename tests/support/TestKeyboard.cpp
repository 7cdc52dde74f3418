#include "support/TestKeyboard.h"

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace tavrine::testing {
namespace {

template <class T>
std::unique_ptr<T, void (*)(void *)> owned(T *pointer) {
    return {pointer, &std::free};
}

} // namespace

TestKeyboard::TestKeyboard()
    : m_connection(xcb_connect(nullptr, nullptr)),
      m_root(xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root) {}

TestKeyboard::~TestKeyboard() {
    xcb_disconnect(m_connection);
}

void TestKeyboard::send(int type, int detail, int x, int y) {
    xcb_test_fake_input(m_connection, static_cast<uint8_t>(type), static_cast<uint8_t>(detail), XCB_CURRENT_TIME,
                        m_root, static_cast<int16_t>(x), static_cast<int16_t>(y), 0);
    // The answer says that the server has taken the event.
    owned(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

void TestKeyboard::down(int keycode) {
    send(XCB_KEY_PRESS, keycode);
}
void TestKeyboard::up(int keycode) {
    send(XCB_KEY_RELEASE, keycode);
}

void TestKeyboard::tap(int keycode) {
    down(keycode);
    up(keycode);
}

void TestKeyboard::chord(std::initializer_list<int> keycodes) {
    for (const int keycode : keycodes)
        down(keycode);
    for (auto keycode = std::rbegin(keycodes); keycode != std::rend(keycodes); ++keycode)
        up(*keycode);
}

void TestKeyboard::movePointer(int x, int y) {
    send(XCB_MOTION_NOTIFY, 0, x, y);
}

void TestKeyboard::click(int button, int x, int y) {
    movePointer(x, y);
    send(XCB_BUTTON_PRESS, button);
    send(XCB_BUTTON_RELEASE, button);
}

void TestKeyboard::press(int button) {
    send(XCB_BUTTON_PRESS, button);
}

void TestKeyboard::release(int button) {
    send(XCB_BUTTON_RELEASE, button);
}

bool TestKeyboard::grabKeyboard() {
    return grabKeyboard(XCB_GRAB_MODE_ASYNC);
}

bool TestKeyboard::freezeKeyboard() {
    return grabKeyboard(XCB_GRAB_MODE_SYNC);
}

bool TestKeyboard::grabKeyboard(unsigned char keys) {
    const auto answer = owned(xcb_grab_keyboard_reply(
        m_connection, xcb_grab_keyboard(m_connection, 0, m_root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, keys),
        nullptr));
    return answer && answer->status == XCB_GRAB_STATUS_SUCCESS;
}

void TestKeyboard::ungrabKeyboard() {
    xcb_ungrab_keyboard(m_connection, XCB_CURRENT_TIME);
    xcb_flush(m_connection);
}

bool TestKeyboard::grabPointer() {
    const auto answer = owned(xcb_grab_pointer_reply(
        m_connection,
        xcb_grab_pointer(m_connection, 0, m_root, XCB_EVENT_MASK_BUTTON_PRESS, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                         XCB_NONE, XCB_NONE, XCB_CURRENT_TIME),
        nullptr));
    return answer && answer->status == XCB_GRAB_STATUS_SUCCESS;
}

void TestKeyboard::ungrabPointer() {
    xcb_ungrab_pointer(m_connection, XCB_CURRENT_TIME);
    xcb_flush(m_connection);
}

bool TestKeyboard::grabKey(int keycode, int state) {
    const auto error = owned(xcb_request_check(
        m_connection, xcb_grab_key_checked(m_connection, 1, m_root, static_cast<uint16_t>(state),
                                           static_cast<uint8_t>(keycode), XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
    return !error;
}

void TestKeyboard::ungrabKey(int keycode, int state) {
    xcb_ungrab_key(m_connection, static_cast<uint8_t>(keycode), m_root, static_cast<uint16_t>(state));
    owned(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

bool TestKeyboard::isDown(int keycode) const {
    const auto answer = owned(xcb_query_keymap_reply(m_connection, xcb_query_keymap(m_connection), nullptr));
    return answer && (answer->keys[keycode / 8] & (1 << (keycode % 8)));
}

int TestKeyboard::locks() const {
    const auto answer = owned(xcb_query_pointer_reply(m_connection, xcb_query_pointer(m_connection, m_root), nullptr));
    return answer ? answer->mask & (XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2 | XCB_MOD_MASK_3) : 0;
}

unsigned int TestKeyboard::focusedWindow() const {
    const auto answer = owned(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    return answer ? answer->focus : 0;
}

void TestKeyboard::giveToNobody() {
    xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_POINTER_ROOT, XCB_INPUT_FOCUS_POINTER_ROOT, XCB_CURRENT_TIME);
    static_cast<void>(focusedWindow()); // the server has done it
}

unsigned int TestKeyboard::windowAt(int x, int y) {
    movePointer(x, y);
    unsigned int window = m_root;
    for (;;) {
        const auto answer =
            owned(xcb_query_pointer_reply(m_connection, xcb_query_pointer(m_connection, window), nullptr));
        if (!answer || answer->child == XCB_NONE)
            return window;
        window = answer->child;
    }
}

} // namespace tavrine::testing
