#pragma once

#include "adapters/frozen/FrozenScreen.h"
#include "adapters/wayland/frozen/OverlaySeat.h"
#include "adapters/wayland/frozen/WaylandTurn.h"

namespace tavrine {

/// The frozen screen of a Wayland compositor that has the layer shell and shows its outputs to programs.
///
/// All outputs lie on one plane of device pixels (`placesOf`). The pointer's place is known with its first event, and
/// is nobody's to move; the keyboard is ours as long as the overlay stands.
class WaylandFrozenScreen final : public FrozenScreen {
public:
    /// True when the session's compositor is one that this is for: then the X server beside it shows nothing.
    [[nodiscard]] static bool isOffered(const WaylandLink &link);

    /// Null when the screen cannot be read, or shown. `link` is open.
    [[nodiscard]] static std::unique_ptr<WaylandFrozenScreen> open(std::unique_ptr<WaylandLink> link);
    ~WaylandFrozenScreen() override;
    WaylandFrozenScreen(const WaylandFrozenScreen &) = delete;
    WaylandFrozenScreen &operator=(const WaylandFrozenScreen &) = delete;

    [[nodiscard]] PixelsToRead picture() const override { return m_picture->pixels(); }
    [[nodiscard]] PixelsToPaint canvas() const override { return m_canvas->pixels(); }
    [[nodiscard]] QRect rect() const override { return picture().rect(); }
    [[nodiscard]] const std::vector<OverlayMonitor> &monitors() const override { return m_monitors; }
    [[nodiscard]] bool isOnePlane() const override { return m_isOnePlane; }
    [[nodiscard]] std::optional<QPoint> firstPointer() const override { return std::nullopt; }
    void show() override;
    void put(const std::vector<QRect> &areas) override;
    void hide() override;
    void tryGrabs() override {}
    [[nodiscard]] bool hasPointer() const override { return true; }
    [[nodiscard]] bool hasBoth() const override { return true; }
    [[nodiscard]] std::vector<QRect> windows() override;
    [[nodiscard]] std::optional<OverlayEvent> nextEvent() override;
    [[nodiscard]] int fileDescriptor() const override { return m_sources.number(); }
    void movePointer(QPoint place) override;

private:
    explicit WaylandFrozenScreen(std::unique_ptr<WaylandLink> link);
    [[nodiscard]] bool freeze();
    [[nodiscard]] bool bindGlobals();
    [[nodiscard]] bool hasEnded();
    void watch(int descriptor) const;

    std::unique_ptr<WaylandLink> m_link;
    OverlayGlobals m_globals;
    std::optional<WaylandTurn> m_turn;
    std::optional<WaylandOutputs> m_outputs;
    std::vector<WaylandOutput> m_frozen;
    std::vector<QRect> m_places;
    std::vector<OverlayMonitor> m_monitors;
    bool m_isOnePlane = true;
    std::shared_ptr<FrameMemory> m_picture;
    std::shared_ptr<FrameMemory> m_canvas;
    std::vector<std::unique_ptr<OverlaySurface>> m_surfaces;
    std::optional<OverlaySeat> m_seat;
    Descriptor m_sources; ///< all that is waited for
};

} // namespace tavrine
