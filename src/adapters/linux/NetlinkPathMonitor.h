#pragma once

#include "adapters/linux/Netlink.h"
#include "ports/PathMonitor.h"

#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>

class QSocketNotifier;

namespace tavrine {

/// The way out as the kernel's table of routes has it. Lives on the main thread and sleeps until the kernel tells of a
/// change.
///
/// What the notices say does not matter, only that there was one: `settling` later the table is read anew. So a burst
/// of them costs ten looks a second at most, and one that was longer than the socket's room is no different. Routes
/// alone would not be enough: the kernel is silent about those that go with their interface or address.
///
/// NetworkManager is not asked: it learns of the same from the same place, and machines without it are not the worse.
class NetlinkPathMonitor final : public QObject, public PathMonitor {
public:
    NetlinkPathMonitor();
    ~NetlinkPathMonitor() override;

    void start(Handler pathUpdateHandler) override;

    /// How often the table was read.
    [[nodiscard]] int looks() const { return m_looks; }

private:
    void look();

    Handler m_handler;
    Netlink m_notices;
    Netlink m_kernel;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_settling;
    std::optional<PathStatus> m_told;
    int m_looks = 0;
    int m_failures = 0; ///< in a row
};

} // namespace tavrine
