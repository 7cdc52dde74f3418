#pragma once

#include <QRect>

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

struct xcb_connection_t;

namespace tavrine::testing {

/// A window of another program that shows a number and draws the next one at a steady pace, on a thread and a
/// connection of its own. A number is a pattern of large black and white blocks, with the opposite pattern below it,
/// and comes onto the screen as a whole: a picture that shows two of them, or a blurred one, shows none.
class CountingWindow {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr int blocks = 8; ///< in each direction

    /// A number is on the screen from some moment between these two on.
    struct Draw {
        Clock::time_point before;
        Clock::time_point after;
    };

    /// On top, and black.
    CountingWindow(const QRect &area, std::chrono::milliseconds interval);
    ~CountingWindow();
    CountingWindow(const CountingWindow &) = delete;
    CountingWindow &operator=(const CountingWindow &) = delete;

    /// From 0 on. An interval is never shorter, and longer when the machine is busy.
    void begin();
    void end();
    /// When each of the numbers was drawn, so far.
    [[nodiscard]] std::vector<Draw> draws() const;
    /// For how much of the time the machine has kept this thread from its work, so far.
    [[nodiscard]] Clock::duration lateness() const;
    /// The longest that it has.
    [[nodiscard]] Clock::duration longestLateness() const;

    /// The number in a picture of the area, three bytes a pixel.
    [[nodiscard]] static std::optional<int> numberIn(const unsigned char *pixels, QSize size);

private:
    void draw(int number);

    xcb_connection_t *m_connection;
    QSize m_size;
    std::chrono::milliseconds m_interval;
    unsigned int m_window = 0;
    unsigned int m_pixmap = 0;
    unsigned int m_black = 0;
    unsigned int m_white = 0;
    std::atomic<bool> m_isOver = false;
    mutable std::mutex m_mutex;
    std::vector<Draw> m_draws;
    std::thread m_thread;
};

} // namespace tavrine::testing
