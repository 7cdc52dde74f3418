#pragma once

#include "adapters/x11/XcbClient.h"

#include <functional>

namespace tavrine {

/// Tells whether a compositor runs, that is, whether windows can let others show through: one that runs owns the
/// selection that is named after its screen.
///
/// Lives on the main thread, on a connection of its own.
class X11Compositor final {
public:
    /// `onChange` is called within the constructor with what is now, and then at every change.
    explicit X11Compositor(std::function<void(bool isRunning)> onChange);

private:
    void watch();
    void handle(const xcb_generic_event_t &event);

    XcbClient m_client;
    std::function<void(bool)> m_onChange;
    quint8 m_firstFixesEvent = 0;
};

} // namespace tavrine
