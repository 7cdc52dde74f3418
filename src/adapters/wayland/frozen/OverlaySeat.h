#pragma once

#include "adapters/wayland/frozen/OverlayKeyboard.h"
#include "adapters/wayland/frozen/OverlaySurface.h"

#include <deque>
#include <functional>

namespace tavrine {

/// The pointer and the keyboard over the surfaces of a frozen screen. Owned by it; goes before the link.
class OverlaySeat {
public:
    /// Null for what is not one of ours.
    using FindSurface = std::function<const OverlaySurface *(wl_surface *surface)>;

    OverlaySeat(WaylandLink &link, const OverlayGlobals &globals, FindSurface findSurface);
    ~OverlaySeat();
    OverlaySeat(const OverlaySeat &) = delete;
    OverlaySeat &operator=(const OverlaySeat &) = delete;

    /// What came in since the last question, in order.
    [[nodiscard]] std::optional<OverlayEvent> next();
    /// Becomes readable when a held key repeats.
    [[nodiscard]] int repetition() const { return m_keyboard.repetition(); }

    /// Keys have moved the aim to `pixel`. The pointer cannot follow: it is hidden, and what is pressed counts there,
    /// until the mouse is moved for good.
    void aimAt(QPoint pixel);

private:
    friend struct OverlaySeatEvents;

    void setCapabilities(std::uint32_t capabilities);
    void enter(std::uint32_t serial, wl_surface *surface, double x, double y);
    void moveTo(double x, double y);
    void press(std::uint32_t button, bool isPressed);
    void showCursor();
    void report(OverlayEvent::Kind kind, int button = 0);

    const OverlayGlobals &m_globals;
    FindSurface m_findSurface;
    wl_seat *m_seat = nullptr;
    wl_pointer *m_pointer = nullptr;
    wl_keyboard *m_keys = nullptr;
    OverlayKeyboard m_keyboard;
    const OverlaySurface *m_under = nullptr; ///< the pointer is over it, or pressed a button there
    std::uint32_t m_enterSerial = 0;
    QPoint m_place; ///< where the pointer is
    QPoint m_told;  ///< and where it was with the last event that was given out
    std::optional<QPoint> m_aim;
    QPoint m_aimedFrom; ///< where the pointer was left when keys began to aim
    double m_trembling = 0;
    wl_surface *m_cursor = nullptr;
    std::unique_ptr<ShmBuffer> m_cursorPicture;
    double m_cursorScale = 0;
    QPoint m_hotSpot;
    std::deque<OverlayEvent> m_events;
};

} // namespace tavrine
