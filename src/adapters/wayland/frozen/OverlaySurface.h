#pragma once

#include "adapters/wayland/screen/ScreenCopy.h"
#include "adapters/wayland/screen/WaylandOutputs.h"

#include <array>

struct wp_viewport;
struct wp_viewporter;
struct zwlr_layer_shell_v1;
struct zwlr_layer_surface_v1;

namespace tavrine {

/// What an overlay is made with; all but the viewporter are there.
struct OverlayGlobals {
    wl_compositor *compositor = nullptr;
    wl_shm *shm = nullptr;
    zwlr_layer_shell_v1 *layers = nullptr;
    wp_viewporter *viewporter = nullptr;
};

/// One output's part of a canvas, shown over everything on it, a pixel of the canvas on each of its own.
///
/// Owned by the frozen screen; goes before the link. It keeps copies of the canvas for the compositor, one where that
/// lets go of it at once, two where it does not, so that nothing is painted into what is being read. Areas are of the
/// canvas.
class OverlaySurface {
public:
    /// Asks for its place; it has one after `WaylandLink::finish`.
    OverlaySurface(const OverlayGlobals &globals, const WaylandOutput &output, const QRect &place);
    ~OverlaySurface();
    OverlaySurface(const OverlaySurface &) = delete;
    OverlaySurface &operator=(const OverlaySurface &) = delete;

    [[nodiscard]] bool isConfigured() const { return m_isConfigured; }
    /// The compositor has taken it off: its output is gone, or it is locked.
    [[nodiscard]] bool isClosed() const { return m_isClosed; }
    [[nodiscard]] wl_surface *surface() const { return m_surface; }
    [[nodiscard]] const QRect &place() const { return m_place; }
    [[nodiscard]] double scale() const { return m_scale; }

    /// The pixel of the canvas under a point of the surface.
    [[nodiscard]] QPoint pixelAt(double x, double y) const;

    /// `areas` of the canvas are to be shown: at once, or when the compositor is ready for another frame.
    void put(PixelsToRead canvas, const std::vector<QRect> &areas);
    /// What waits is shown if it may be. To be called after events.
    void catchUp(PixelsToRead canvas);

private:
    friend struct OverlaySurfaceEvents;
    struct Buffer {
        std::unique_ptr<ShmBuffer> shared;
        std::vector<QRect> behind; ///< of the output
        bool isHeld = false;
    };

    [[nodiscard]] Buffer *freeBuffer();
    [[nodiscard]] QSize shownPixels() const;

    const OverlayGlobals &m_globals;
    QRect m_place;
    double m_scale;
    int m_wholeScale = 1;
    QSize m_points; ///< as the compositor gave it
    wl_surface *m_surface = nullptr;
    zwlr_layer_surface_v1 *m_layer = nullptr;
    wp_viewport *m_viewport = nullptr;
    wl_callback *m_frame = nullptr;
    std::array<Buffer, 2> m_buffers;
    std::vector<QRect> m_waiting; ///< of the output: what is to be shown anew
    bool m_isConfigured = false;
    bool m_isClosed = false;
};

} // namespace tavrine
