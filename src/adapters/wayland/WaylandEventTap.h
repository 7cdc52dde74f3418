#pragma once

#include "adapters/linux/SessionEvents.h"
#include "adapters/wayland/WaylandClient.h"
#include "ports/EventTap.h"

namespace tavrine {

class LayerStack;

/// A tap as a surface that has the keyboard for itself alone, and the compositor's shortcuts with it. Lives on the main
/// thread and waits for nobody. There where the compositor has the layer shell and lets shortcuts be inhibited.
///
/// The compositor says when it begins: a tap waits until then, and for a second after the compositor knows what is
/// wanted. Panels of this program lend it the keyboard for as long as it lives. What a window takes away, as by a click
/// into it, is taken back in a moment. Lock screens and what else floats above this program's surface, where that
/// counts, are obeyed first: they end it.
///
/// Locks of the keyboard and its layout belong to the compositor, and no program sets them: what keys did to them
/// stays.
class WaylandEventTaps final : public EventTaps {
public:
    /// With part in that connection. The stack outlives the taps.
    WaylandEventTaps(std::shared_ptr<WaylandReader> reader, LayerStack &stack);

    [[nodiscard]] bool areThere() const override;
    [[nodiscard]] std::unique_ptr<EventTap> create(std::function<void()> onChange) override;

private:
    const std::shared_ptr<WaylandReader> m_reader;
    const WaylandClient m_client;
    LayerStack &m_stack;
    SessionEvents m_sessionEvents;
};

} // namespace tavrine
