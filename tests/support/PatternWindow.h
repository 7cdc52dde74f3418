#pragma once

#include <QImage>
#include <QRect>

#include <cstdint>

struct xcb_connection_t;

namespace tavrine::testing {

/// A window of another program whose every pixel differs from its neighbours, over the whole screen or a part of it,
/// and a look at the screen from outside.
class PatternWindow {
public:
    /// Covers the screen; no window manager has a say.
    PatternWindow();
    ~PatternWindow();
    PatternWindow(const PatternWindow &) = delete;
    PatternWindow &operator=(const PatternWindow &) = delete;

    [[nodiscard]] QRect screen() const { return m_screen; }

    /// What the pattern has at a place of the screen.
    [[nodiscard]] static uint32_t colourAt(int x, int y) {
        const uint32_t mixed = (static_cast<uint32_t>(x) * 2654435761U) ^ (static_cast<uint32_t>(y) * 2246822519U);
        return (mixed ^ mixed >> 13) & 0xffffffU;
    }
    [[nodiscard]] static QImage expected(const QRect &area);

    /// A plain window on top, as a menu or another program has one; 0 to take it away.
    unsigned int addWindow(const QRect &area, uint32_t colour);
    void removeWindow(unsigned int window);

    /// What the screen shows at a place, from outside; whatever covers it.
    [[nodiscard]] uint32_t shownAt(int x, int y) const;

private:
    xcb_connection_t *m_connection;
    unsigned int m_root = 0;
    unsigned int m_window = 0;
    QRect m_screen;
};

} // namespace tavrine::testing
