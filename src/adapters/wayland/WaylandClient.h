#pragma once

#include "adapters/wayland/WaylandLink.h"
#include "adapters/wayland/WaylandReader.h"

#include <functional>
#include <memory>

namespace tavrine {

/// A link that is read by the event loop when something arrives and never otherwise.
///
/// Owned by the adapter that uses it; lives on the thread that made it, which has an event loop.
class WaylandClient final {
public:
    /// With part in the reader's connection; null for a connection of its own.
    explicit WaylandClient(std::shared_ptr<WaylandReader> reader = nullptr);
    ~WaylandClient();
    WaylandClient(const WaylandClient &) = delete;
    WaylandClient &operator=(const WaylandClient &) = delete;

    [[nodiscard]] bool isConnected() const { return m_link.isOpen(); }
    [[nodiscard]] WaylandLink &link() { return m_link; }
    [[nodiscard]] const WaylandLink &link() const { return m_link; }
    /// What the compositor does not take at once goes out when it reads on.
    void flush() { m_reader->flush(); }
    /// Called once, in a turn of its own, when the compositor has ended the connection. Without it that is the
    /// program's end.
    void setOnLost(std::function<void()> onLost) { m_onLost = std::move(onLost); }

private:
    friend class WaylandReader;

    void lose();

    const std::shared_ptr<WaylandReader> m_reader;
    WaylandLink m_link;
    std::function<void()> m_onLost;
};

} // namespace tavrine
