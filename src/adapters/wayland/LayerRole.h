#pragma once

#include <QPointer>
#include <QRect>
#include <QRegion>
#include <QScreen>

#include <functional>

#include <wayland-client.h>

class QWindow;
struct zwlr_layer_surface_v1;

namespace tavrine {

class LayerShell;

/// How a window stands on its screen.
struct LayerPlace {
    QRect rect; ///< in the toolkit's plane and points
    bool takesKeyboard = false;
    bool isOverFullScreen = true; ///< and over every other that is not
    bool operator==(const LayerPlace &) const = default;
};

/// The role of a toolkit's window that floats: over everything, on one screen, exactly where it is told. Given before
/// the window is shown, taken before it is hidden. Main thread.
class LayerRole {
public:
    /// `onClosed` is called when the compositor has taken the window away, as with its screen: there is no role then.
    LayerRole(LayerShell &shell, QWindow &window, QScreen &screen, const LayerPlace &place,
              std::function<void()> onClosed);
    ~LayerRole();
    LayerRole(const LayerRole &) = delete;
    LayerRole &operator=(const LayerRole &) = delete;

    /// False where the compositor gave none: the window must not be shown then.
    [[nodiscard]] bool isGiven() const { return m_isConfigured; }
    /// Null once its screen is gone.
    [[nodiscard]] QScreen *screen() const { return m_screen; }
    /// The compositor's points in one of the toolkit's, when it was given.
    [[nodiscard]] double factor() const { return m_factor; }
    [[nodiscard]] zwlr_layer_surface_v1 *role() const { return m_role; }
    [[nodiscard]] wl_surface *surface() const { return m_surface; }
    void setPlace(const LayerPlace &place);
    /// Where it takes the mouse, in the window's own points.
    void setInputRegion(const QRegion &region);
    /// As when the compositor takes the window away: it is to be shown anew.
    void retire() const { m_onClosed(); }

private:
    void apply(const LayerPlace &place);
    void tellTaken() const;

    LayerShell &m_shell;
    const QPointer<QScreen> m_screen;
    const double m_factor;
    const std::function<void()> m_onClosed;
    LayerPlace m_place;
    QRegion m_input; ///< in the window's own points
    wl_surface *m_surface = nullptr;
    zwlr_layer_surface_v1 *m_role = nullptr;
    bool m_isConfigured = false;
};

} // namespace tavrine
