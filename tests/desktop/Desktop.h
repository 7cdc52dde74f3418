#pragma once

#include "support/TestKeyboard.h"

#include <QRect>
#include <QString>

#include <chrono>
#include <functional>
#include <vector>

namespace tavrine::testing {

/// The screen as the person sees it, and the person's hands: a client of its own on the test's display.
class Desktop {
public:
    Desktop();
    ~Desktop();
    Desktop(const Desktop &) = delete;
    Desktop &operator=(const Desktop &) = delete;

    TestKeyboard keyboard;

    /// Of the whole screen, all monitors together.
    [[nodiscard]] QSize size() const;
    /// Every window on the screen with exactly this title, whether or not a window manager knows it.
    [[nodiscard]] std::vector<quint32> windowsTitled(const QString &title) const;
    [[nodiscard]] std::vector<quint32> windowsMatching(const std::function<bool(const QString &title)> &matches) const;
    [[nodiscard]] bool isShown(const char *title) const;
    /// Exactly one window has the title, and it has the keyboard.
    [[nodiscard]] bool hasKeyboard(const char *title) const;
    /// The uppermost window at a place that no window manager knows, whether or not it takes clicks; 0 for none.
    [[nodiscard]] quint32 overlayAt(QPoint place) const;
    /// Where the X server knows the pointer to be: under Wayland as far as that is over a window of the server's.
    [[nodiscard]] QPoint pointer() const;
    /// A window without a name lies over the whole screen, as that of the capture tool does.
    [[nodiscard]] bool isFrozen() const;
    /// Where a window takes the mouse, in pixels of the window; the bounds of all its parts.
    [[nodiscard]] QRect inputOf(quint32 window) const;
    /// The brightest part of the screen's colour at a place, from 0 to 255; on a screen of 24 bits.
    [[nodiscard]] int brightnessAt(QPoint place) const;
    [[nodiscard]] bool isAbove(quint32 upper, quint32 lower) const;
    /// As the window manager tells it; the keyboard itself may be with a window inside it.
    [[nodiscard]] quint32 activeWindow() const;
    [[nodiscard]] QString title(quint32 window) const;
    /// In pixels of the whole screen, without a window manager's frame; empty for a window that is gone.
    [[nodiscard]] QRect geometry(quint32 window) const;
    /// With the frame, where a window manager drew one.
    [[nodiscard]] QRect frameOf(quint32 window) const;
    /// The window of a program that is uppermost at a place.
    [[nodiscard]] quint32 topWindowAt(QPoint place);
    /// The server's present one.
    [[nodiscard]] quint32 time() const;
    /// The process that runs the window manager; 0 for none.
    [[nodiscard]] qint64 windowManager() const;
    /// The first window of a process on the screen; 0 for none.
    [[nodiscard]] quint32 windowOf(qint64 processId) const;

    /// Types letters in lower case, digits, blanks and the signs - and ; of an American keyboard.
    void type(const char *text);
    void openClipboardPanel() { keyboard.chord({key::leftSuper, key::leftShift, key::v}); }
    void openEmojiPanel();
    void pressReturn() { keyboard.tap(key::returnKey); }
    void pressEscape() { keyboard.tap(key::escape); }
    // As a task bar does it.
    void activate(quint32 window);
    void close(quint32 window);
    void setFullScreen(quint32 window, bool isFullScreen);
    /// Takes a property from a window.
    void clear(quint32 window, const char *property);
    /// As the person drags it, whatever its frame.
    void move(quint32 window, QPoint place);
    void click(QPoint place) { keyboard.click(1, place.x(), place.y()); }
    void doubleClick(QPoint place);

private:
    void tellWindowManager(quint32 window, const char *message, std::initializer_list<quint32> data);
    void visit(const std::function<void(quint32)> &each) const;
    [[nodiscard]] QByteArray property(quint32 window, const char *name) const;
    [[nodiscard]] quint32 atom(const char *name) const;
    [[nodiscard]] bool isViewable(quint32 window) const;

    xcb_connection_t *m_connection;
    quint32 m_root;
};

inline constexpr auto clipboardPanel = "Clipboard Search";
inline constexpr auto classicPanel = "Classic Clipboard";
inline constexpr auto emojiPanel = "Emoji Picker";
inline constexpr auto welcomeWindow = "Welcome to Tavrine";

} // namespace tavrine::testing
