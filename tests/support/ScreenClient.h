#pragma once

#include <QImage>
#include <QRect>

#include <cstdint>
#include <string>
#include <vector>

struct xcb_connection_t;

namespace tavrine::testing {

/// Another program on the test's display: plain windows that no window manager has a say in, and the pointer. Every
/// call is done when it returns.
class ScreenClient {
public:
    using Window = std::uint32_t;

    ScreenClient();
    ~ScreenClient();
    ScreenClient(const ScreenClient &) = delete;
    ScreenClient &operator=(const ScreenClient &) = delete;

    /// On top, of one colour.
    Window add(const QRect &area, std::uint32_t colour);
    /// On top, with a channel for what shows through; `colour` is premultiplied.
    Window addTranslucent(const QRect &area, std::uint32_t colour);
    /// On top, without a background: what it shows is what it paints, and it paints when the test says so.
    Window addBare(const QRect &area);
    void destroy(Window window);
    void setMapped(Window window, bool isMapped);
    void move(Window window, const QRect &area);
    void raise(Window window);
    void lower(Window window);
    /// Cuts the window down to these parts of it.
    void shape(Window window, const std::vector<QRect> &parts);
    void paint(Window window, const QRect &area, std::uint32_t colour);
    /// Paints without waiting for the server.
    void paintOften(Window window, const QRect &area, std::uint32_t colour);
    /// Of the root window itself, from then on.
    void setBackground(std::uint32_t colour);
    /// Both steps of it: it is there, and it is told, which many do first and some never.
    void paintBackground(std::uint32_t colour);
    void tellOfBackground(std::uint32_t pixmap);
    /// The picture of the root window, over and over, told as those do who set one.
    void setWallpaper(const QImage &tile);

    /// Gives the window a pointer of that size, in one premultiplied colour.
    void setPointer(Window window, QSize size, QPoint hotSpot, std::uint32_t colour);
    /// As a program does it; no device has moved.
    void warpPointer(QPoint place);

    [[nodiscard]] bool isComposited() const;
    /// What the screen shows.
    [[nodiscard]] QImage screen(const QRect &area) const;
    [[nodiscard]] QRect wholeScreen() const;
    /// All that the server holds for the clients whose connection is not this one's.
    [[nodiscard]] int resourcesOfOthers() const;
    void finish() const;

private:
    [[nodiscard]] std::uint32_t atom(const std::string &name) const;
    Window create(const QRect &area, int depth, std::uint32_t visual, std::uint32_t mask,
                  const std::vector<std::uint32_t> &values);

    xcb_connection_t *m_connection;
    Window m_root = 0;
    std::uint32_t m_context = 0;
};

} // namespace tavrine::testing
