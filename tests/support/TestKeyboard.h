#pragma once

#include <initializer_list>
#include <vector>

struct xcb_connection_t;

namespace tavrine::testing {

/// Keycodes of a keyboard whose positions count as the kernel has them.
namespace key {
inline constexpr int escape = 9;
inline constexpr int backspace = 22;
inline constexpr int tab = 23;
inline constexpr int returnKey = 36;
inline constexpr int leftControl = 37;
inline constexpr int leftShift = 50;
inline constexpr int v = 55;
inline constexpr int b = 56;
inline constexpr int leftAlt = 64;
inline constexpr int space = 65;
inline constexpr int capsLock = 66;
inline constexpr int numLock = 77;
inline constexpr int rightAlt = 108;
inline constexpr int up = 111;
inline constexpr int left = 113;
inline constexpr int right = 114;
inline constexpr int down = 116;
inline constexpr int leftSuper = 133;
} // namespace key

/// The person at the keyboard and the mouse, and another program that grabs: a client of its own on the test's display.
class TestKeyboard {
public:
    TestKeyboard();
    ~TestKeyboard();
    TestKeyboard(const TestKeyboard &) = delete;
    TestKeyboard &operator=(const TestKeyboard &) = delete;

    void down(int keycode);
    void up(int keycode);
    void tap(int keycode);
    /// Presses the keys in order and releases them in the opposite order.
    void chord(std::initializer_list<int> keycodes);
    void click(int button, int x, int y);
    void movePointer(int x, int y);
    void press(int button);
    void release(int button);

    /// As another program: all keys, the pointer, or one combination. False when refused.
    [[nodiscard]] bool grabKeyboard();
    /// The same, and the server keeps every key for later.
    [[nodiscard]] bool freezeKeyboard();
    void ungrabKeyboard();
    [[nodiscard]] bool grabPointer();
    void ungrabPointer();
    [[nodiscard]] bool grabKey(int keycode, int state);
    void ungrabKey(int keycode, int state);

    [[nodiscard]] bool isDown(int keycode) const;
    /// The locks that are on, as bits of a key event's state.
    [[nodiscard]] int locks() const;
    [[nodiscard]] unsigned int focusedWindow() const;
    /// As when the window that had it goes.
    void giveToNobody();
    /// The uppermost window at the place, as the pointer would meet it there; frames of a window manager included.
    [[nodiscard]] unsigned int windowAt(int x, int y);

private:
    [[nodiscard]] bool grabKeyboard(unsigned char keys);
    void send(int type, int detail, int x = 0, int y = 0);

    xcb_connection_t *m_connection;
    unsigned int m_root;
};

} // namespace tavrine::testing
