#pragma once

#include <QRect>

#include <functional>

#include <wayland-client.h>

class QWindow;
struct xdg_popup;
struct xdg_surface;
struct zwlr_layer_surface_v1;

namespace tavrine {

class LayerShell;

/// The role of a menu, a popover or a tool tip of a window that floats: over that window, where the toolkit wants it.
/// Given before it is shown, taken before it is hidden. Main thread; goes before the role of what it belongs to.
class PopupRole {
public:
    /// What it belongs to: one of the two.
    struct Parent {
        zwlr_layer_surface_v1 *layer = nullptr;
        xdg_surface *popup = nullptr;
    };
    /// `rect` is within the parent, in the compositor's points. `onDone` is called when the compositor has put it away.
    PopupRole(LayerShell &shell, QWindow &window, const Parent &parent, const QRect &rect,
              std::function<void()> onDone);
    ~PopupRole();
    PopupRole(const PopupRole &) = delete;
    PopupRole &operator=(const PopupRole &) = delete;

    /// False where the compositor gave none: it must not be shown then.
    [[nodiscard]] bool isGiven() const { return m_isConfigured; }
    [[nodiscard]] xdg_surface *surface() const { return m_surface; }

private:
    void take(const QRect &rect, const Parent &parent, wl_event_queue *queue);

    LayerShell &m_shell;
    const std::function<void()> m_onDone;
    wl_surface *m_pixels = nullptr;
    xdg_surface *m_surface = nullptr;
    xdg_popup *m_popup = nullptr;
    bool m_isConfigured = false;
};

} // namespace tavrine
