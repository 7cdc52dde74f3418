#pragma once

#include <QRegion>

#include <chrono>
#include <functional>
#include <map>
#include <vector>

#include <wayland-client.h>

class QScreen;
class QWindow;
struct wp_viewporter;
struct xdg_wm_base;
struct zwlr_layer_shell_v1;

namespace tavrine {

class LayerRole;

/// The layer shell on the toolkit's own connection: a bare surface of the toolkit's gets its role from here. Lives on
/// the main thread; outlives the roles.
///
/// A window is bare where it by-passes the window manager.
class LayerShell {
public:
    using Wait = std::chrono::milliseconds;
    /// A compositor that is well answers in a millisecond or two, but a busy machine may keep it waiting, and a panel
    /// that was given up is missing until it is called again. One that hangs shows nothing anyway.
    static constexpr Wait longestWait{5000};

    /// Tells the toolkit, which has not started, how to draw here.
    static void prepareToolkit();

    LayerShell();
    /// The toolkit takes the connection down, and with it what was bound; it may have done so by now.
    ~LayerShell() = default;
    LayerShell(const LayerShell &) = delete;
    LayerShell &operator=(const LayerShell &) = delete;

    [[nodiscard]] zwlr_layer_shell_v1 *shell() const { return m_shell; }
    [[nodiscard]] xdg_wm_base *popups() const { return m_popups; }
    /// Null where a picture can have no size but its own.
    [[nodiscard]] wp_viewporter *viewporter() const { return m_viewporter; }
    [[nodiscard]] wl_shm *memory() const { return m_memory; }
    [[nodiscard]] wl_display *display() const { return m_display; }

    /// The window's surface, which is made anew where the last hiding took it. Null without a compositor.
    [[nodiscard]] wl_surface *surfaceOf(QWindow &window) const;
    [[nodiscard]] wl_output *outputOf(QScreen &screen) const;
    /// Where a surface takes the mouse, in its own points; all of it for null. To be committed.
    void setInputRegion(wl_surface *surface, const QRegion *region) const;
    void flush() const;
    /// Hears of what is dragged over the windows, as the toolkit's own does. Null without a seat.
    [[nodiscard]] wl_data_device *makeDataDevice() const;

    /// The roles that there are, while they are.
    void add(const LayerRole &role) { m_roles.push_back(&role); }
    void remove(const LayerRole &role) { std::erase(m_roles, &role); }
    /// The toolkit's points have another size: what floats is shown anew.
    void showAnew() const;

    /// Where what floats takes the mouse, in the toolkit's plane. Each tells of itself; nothing when it goes.
    void setTaken(const void *window, const QRegion &part);
    [[nodiscard]] QRegion taken() const;

    /// While something is dragged out of a window of this program, which is the drag's as long as it lasts.
    void setDragging(bool is);
    [[nodiscard]] bool isDragging() const { return m_isDragging; }

    /// `changed` is called when a part is taken or given back, and when a drag begins or ends.
    void setOnChanged(std::function<void()> changed) { m_changed = std::move(changed); }

    /// Calls the handlers of what came for `queue` until `condition` holds. False when it did not in time.
    [[nodiscard]] bool waitOn(wl_event_queue *queue, const std::function<bool()> &condition) const;

private:
    wl_display *m_display = nullptr;
    wl_registry *m_registry = nullptr;
    wl_compositor *m_compositor = nullptr;
    zwlr_layer_shell_v1 *m_shell = nullptr;
    xdg_wm_base *m_popups = nullptr;
    wl_data_device_manager *m_dragging = nullptr;
    wp_viewporter *m_viewporter = nullptr;
    wl_shm *m_memory = nullptr;
    std::vector<const LayerRole *> m_roles;
    std::map<const void *, QRegion> m_taken;
    std::function<void()> m_changed;
    bool m_isDragging = false;
};

} // namespace tavrine
