#pragma once

#include "base/Time.h"

#include <QObject>
#include <QString>

#include <memory>

namespace tavrine {

class InterfaceCounters;
class PathMonitor;

/// `bytes` of one second, in at least six columns: "1023 B", "   1KB", " 1.0MB".
[[nodiscard]] QString formattedSpeed(quint64 bytes);

/// The speed meter: once a second it looks at what went through all interfaces together, and it knows whether there is
/// a way out. Lives on the main thread, as long as the process; the path is watched all that time.
///
///  1. The meter runs from the beginning. Its first look, and the first after each start, only tells where to count
///     from.
///  2. What counts is every interface that is up or running and no loopback. A total that is smaller than the last one,
///     because a counter began anew or an interface went, is a speed of 0 in that direction.
///  3. A look that fails changes nothing: the next one counts from the last that did not.
class NetworkMonitor : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds sampleInterval{1.0};

    /// All outlive the monitor.
    struct Ports {
        Time &time;
        InterfaceCounters &counters;
        PathMonitor &path;
    };

    explicit NetworkMonitor(const Ports &ports);

    [[nodiscard]] const QString &downloadSpeed() const { return m_downloadSpeed; }
    [[nodiscard]] const QString &uploadSpeed() const { return m_uploadSpeed; }
    [[nodiscard]] bool isConnected() const { return m_isConnected; }

    /// Nothing while it runs.
    void startMeter();
    /// The figures stay as they were last.
    void stopMeter() { m_timer.reset(); }
    [[nodiscard]] bool isRunning() const { return m_timer != nullptr; }

Q_SIGNALS:
    /// The figures, or the connection, were set, be it to what they were.
    void published();

private:
    void sample();
    void publish(quint64 received, quint64 sent);

    Ports m_ports;
    QString m_downloadSpeed = QStringLiteral("   0 KB");
    QString m_uploadSpeed = QStringLiteral("   0 KB");
    std::unique_ptr<Timer> m_timer;
    quint64 m_previousBytesReceived = 0;
    quint64 m_previousBytesSent = 0;
    bool m_isConnected = true;
    bool m_isFirstCheck = true;
};

} // namespace tavrine
