#include "adapters/wayland/frozen/OverlaySurface.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <wayland/viewporter.h>
#include <wayland/wlr-layer-shell-unstable-v1.h>

namespace tavrine {
namespace {

/// Many small areas cost more to keep apart than to copy what lies between them.
void add(std::vector<QRect> &areas, const QRect &area) {
    constexpr size_t many = 32;
    if (area.isEmpty())
        return;
    areas.push_back(area);
    if (areas.size() < many)
        return;
    QRect all;
    for (const QRect &each : areas)
        all |= each;
    areas = {all};
}

} // namespace

struct OverlaySurfaceEvents {
    static OverlaySurface &of(void *self) { return *static_cast<OverlaySurface *>(self); }
    static constexpr zwlr_layer_surface_v1_listener layer{
        .configure =
            [](void *self, zwlr_layer_surface_v1 *surface, std::uint32_t serial, std::uint32_t width,
               std::uint32_t height) {
                zwlr_layer_surface_v1_ack_configure(surface, serial);
                of(self).m_isConfigured = true;
                if (width > 0 && height > 0)
                    of(self).m_points = {static_cast<int>(width), static_cast<int>(height)};
            },
        .closed = [](void *self, zwlr_layer_surface_v1 *) { of(self).m_isClosed = true; },
    };
    static constexpr wl_callback_listener frame{
        .done =
            [](void *self, wl_callback *callback, std::uint32_t) {
                wl_callback_destroy(callback);
                of(self).m_frame = nullptr;
            },
    };
    static constexpr wl_buffer_listener buffer{
        .release = [](void *isHeld, wl_buffer *) { *static_cast<bool *>(isHeld) = false; },
    };
};

OverlaySurface::OverlaySurface(const OverlayGlobals &globals, const WaylandOutput &output, const QRect &place)
    : m_globals(globals), m_place(place), m_scale(output.scale()), m_points(output.logical.size()) {
    m_surface = wl_compositor_create_surface(globals.compositor);
    m_layer = zwlr_layer_shell_v1_get_layer_surface(globals.layers, m_surface, output.proxy,
                                                    ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "screencapture");
    zwlr_layer_surface_v1_add_listener(m_layer, &OverlaySurfaceEvents::layer, this);
    zwlr_layer_surface_v1_set_anchor(m_layer, ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                                  ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT |
                                                  ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT);
    zwlr_layer_surface_v1_set_exclusive_zone(m_layer, -1); // over bars too
    zwlr_layer_surface_v1_set_keyboard_interactivity(m_layer, ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_EXCLUSIVE);
    if (globals.viewporter)
        m_viewport = wp_viewporter_get_viewport(globals.viewporter, m_surface);
    else
        m_wholeScale = std::max(1, static_cast<int>(std::lround(m_scale)));
    wl_surface_commit(m_surface);
}

OverlaySurface::~OverlaySurface() {
    if (m_frame)
        wl_callback_destroy(m_frame);
    if (m_viewport)
        wp_viewport_destroy(m_viewport);
    zwlr_layer_surface_v1_destroy(m_layer);
    wl_surface_destroy(m_surface);
}

QPoint OverlaySurface::pixelAt(double x, double y) const {
    return m_place.topLeft() +
           QPoint(static_cast<int>(std::floor(x * m_scale)), static_cast<int>(std::floor(y * m_scale)));
}

/// Points are whole numbers, so that an output may have a pixel more than its points, which no surface reaches. What is
/// to be shown is cut there, or the rest would be squeezed by that pixel.
QSize OverlaySurface::shownPixels() const {
    const auto pixels = [this](int points, int limit) {
        return std::min(static_cast<int>(std::lround(points * m_scale)), limit);
    };
    return {pixels(m_points.width(), m_place.width()), pixels(m_points.height(), m_place.height())};
}

OverlaySurface::Buffer *OverlaySurface::freeBuffer() {
    for (Buffer &buffer : m_buffers) {
        if (!buffer.shared) {
            buffer.shared = ShmBuffer::make(m_globals.shm, WL_SHM_FORMAT_XRGB8888, m_place.size(),
                                            m_place.width() * int{sizeof(quint32)});
            if (!buffer.shared)
                return nullptr;
            buffer.behind = {QRect({}, m_place.size())};
            wl_buffer_add_listener(buffer.shared->buffer(), &OverlaySurfaceEvents::buffer, &buffer.isHeld);
        }
        if (!buffer.isHeld)
            return &buffer;
    }
    return nullptr;
}

void OverlaySurface::put(PixelsToRead canvas, const std::vector<QRect> &areas) {
    for (const QRect &area : areas)
        add(m_waiting, (area & m_place).translated(-m_place.topLeft()));
    catchUp(canvas);
}

void OverlaySurface::catchUp(PixelsToRead canvas) {
    if (m_waiting.empty() || m_frame || !m_isConfigured || m_isClosed)
        return;
    Buffer *const buffer = freeBuffer();
    if (!buffer)
        return;
    for (Buffer &each : m_buffers)
        for (const QRect &part : m_waiting)
            add(each.behind, part);
    const PixelsToPaint pixels = buffer->shared->memory()->pixels();
    for (const QRect &part : buffer->behind)
        for (int y = part.top(); y <= part.bottom(); ++y)
            std::memcpy(pixels.line(y) + part.left(), canvas.line(m_place.top() + y) + m_place.left() + part.left(),
                        static_cast<size_t>(part.width()) * sizeof(quint32));
    buffer->behind = {};
    buffer->isHeld = true;
    wl_surface_attach(m_surface, buffer->shared->buffer(), 0, 0);
    if (m_viewport) {
        const QSize shown = shownPixels();
        wp_viewport_set_source(m_viewport, 0, 0, wl_fixed_from_int(shown.width()), wl_fixed_from_int(shown.height()));
        wp_viewport_set_destination(m_viewport, m_points.width(), m_points.height());
    } else {
        wl_surface_set_buffer_scale(m_surface, m_wholeScale);
    }
    for (const QRect &part : m_waiting)
        wl_surface_damage_buffer(m_surface, part.x(), part.y(), part.width(), part.height());
    m_waiting = {};
    m_frame = wl_surface_frame(m_surface);
    wl_callback_add_listener(m_frame, &OverlaySurfaceEvents::frame, this);
    wl_surface_commit(m_surface);
}

} // namespace tavrine
