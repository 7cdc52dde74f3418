#pragma once

#include "base/SampleGate.h"
#include "ports/ScreenStream.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace tavrine {

/// A connection of its own to the session bus, for what a stream of the screen asks for: that ends with it. Made and
/// used on the stream's thread. All waiting is bounded, and ends when the stream is stopped.
class StreamBus {
public:
    using Session = SampleGate<ScreenSample>;
    using Wait = std::chrono::milliseconds;

    explicit StreamBus(const Session &session);
    ~StreamBus();
    StreamBus(const StreamBus &) = delete;
    StreamBus &operator=(const StreamBus &) = delete;

    [[nodiscard]] QDBusConnection &connection() { return m_bus; }
    [[nodiscard]] bool isOpen() const { return m_bus.isConnected(); }

    /// Runs the events of the thread until `isDone`, which is asked after each of them and when `wake`, a descriptor,
    /// can be read. False when it is not in time, or the stream is over.
    [[nodiscard]] bool waitUntil(const std::function<bool()> &isDone, Wait longest, int wake = -1) const;
    /// The answer; an error where there is none.
    [[nodiscard]] QDBusMessage ask(const QDBusMessage &call, Wait longest);

private:
    const Session &m_session;
    const QString m_name;
    QDBusConnection m_bus;
};

} // namespace tavrine
