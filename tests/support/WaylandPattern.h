#pragma once

#include "adapters/wayland/screen/ScreenCopy.h"
#include "adapters/wayland/screen/WaylandOutputs.h"

#include <QImage>

struct wp_viewporter;
struct xdg_wm_base;
struct zwlr_layer_shell_v1;

namespace tavrine::testing {

/// A picture on all outputs of a Wayland session, in which no pixel is like its neighbours: each of an output's own
/// pixels has a colour of its own. It lies below all windows; where the compositor has no layer shell, in windows that
/// fill the screens.
class WaylandPattern {
public:
    WaylandPattern();
    ~WaylandPattern();
    WaylandPattern(const WaylandPattern &) = delete;
    WaylandPattern &operator=(const WaylandPattern &) = delete;

    [[nodiscard]] bool isThere() const { return m_isThere; }
    /// Answers the compositor for as long as that; false when it is gone. Windows that fill screens need it.
    [[nodiscard]] bool serve(std::chrono::milliseconds longest) { return m_link.dispatch(longest); }
    /// One of its windows is the active one.
    [[nodiscard]] bool isActive() const;
    [[nodiscard]] std::vector<WaylandOutput> outputs() const { return m_outputs.all(); }
    /// What `area` of an output's pixels shows.
    [[nodiscard]] static QImage expected(int output, const QRect &area);
    [[nodiscard]] static QRgb colourAt(int output, int x, int y);

    /// Paints `area` of the output's pixels in one colour.
    void paint(int output, const QRect &area, QRgb colour);

private:
    struct Board;

    WaylandLink m_link;
    WaylandOutputs m_outputs;
    wl_compositor *m_compositor = nullptr;
    wl_shm *m_shm = nullptr;
    zwlr_layer_shell_v1 *m_layers = nullptr;
    xdg_wm_base *m_windows = nullptr;
    wp_viewporter *m_viewporter = nullptr;
    std::vector<std::unique_ptr<Board>> m_boards;
    bool m_isThere = false;
};

} // namespace tavrine::testing
