#pragma once

#include "adapters/wayland/WaylandLink.h"

#include <QObject>

#include <functional>

class QSocketNotifier;

namespace tavrine {

/// A link that is read by the event loop when something arrives and never otherwise.
///
/// Owned by the adapter that uses it; lives on the thread that made it, which has an event loop.
class WaylandClient final : public QObject {
public:
    explicit WaylandClient(QObject *parent = nullptr);
    ~WaylandClient() override;

    [[nodiscard]] bool isConnected() const { return m_link.isOpen(); }
    [[nodiscard]] WaylandLink &link() { return m_link; }
    [[nodiscard]] const WaylandLink &link() const { return m_link; }
    /// What the compositor does not take at once goes out when it reads on.
    void flush();
    /// Called once, in a turn of its own, when the compositor has ended the connection. Without it that is the
    /// program's end.
    void setOnLost(std::function<void()> onLost) { m_onLost = std::move(onLost); }

private:
    void read();

    WaylandLink m_link;
    QSocketNotifier *m_notifier = nullptr;
    QSocketNotifier *m_room = nullptr; ///< while something is left to be sent
    std::function<void()> m_onLost;
};

} // namespace tavrine
