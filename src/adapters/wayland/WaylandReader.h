#pragma once

#include "adapters/wayland/WaylandConnection.h"

#include <QObject>

#include <memory>
#include <vector>

class QSocketNotifier;

namespace tavrine {

class WaylandClient;

/// Has a connection read by the event loop when something arrives and never otherwise, for all clients that share it.
///
///  1. Who waits for an answer reads for the others as well: they hear of it in a turn of its own.
///  2. When the compositor has ended the connection, each client is told once.
///
/// Owned by its clients; lives on the thread that made it, which has an event loop.
class WaylandReader final : public QObject {
public:
    /// Null for a connection of its own.
    explicit WaylandReader(std::shared_ptr<WaylandConnection> connection = nullptr);
    ~WaylandReader() override;

    [[nodiscard]] const std::shared_ptr<WaylandConnection> &connection() const { return m_connection; }

private:
    friend class WaylandClient;

    void add(WaylandClient &client);
    void remove(const WaylandClient &client);
    void flush();
    void readLater();
    void read();
    void giveTurns();
    void tellLoss();

    const std::shared_ptr<WaylandConnection> m_connection;
    std::vector<WaylandClient *> m_clients;
    QSocketNotifier *m_notifier = nullptr;
    QSocketNotifier *m_room = nullptr; ///< while something is left to be sent
    bool m_isTurnDue = false;
};

} // namespace tavrine
