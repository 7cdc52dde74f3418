#include "utilities/meter/NetworkMonitor.h"

#include "ports/InterfaceCounters.h"
#include "ports/PathMonitor.h"

#include <QPointer>

#include <array>
#include <charconv>
#include <utility>

namespace tavrine {
namespace {

constexpr double bytesInAKilobyte = 1024;

bool counts(const InterfaceAddress &entry) {
    return (entry.flags & (interfaceFlag::up | interfaceFlag::running)) != 0 &&
           (entry.flags & interfaceFlag::loopback) == 0 && entry.isLinkLayer && entry.data;
}

quint64 growth(quint64 before, quint64 now) {
    return now < before ? 0 : now - before;
}

/// Neither the person's locale nor Qt's rounding has a part in this: a tie goes to the even digit.
QString padded(double number, int decimals) {
    constexpr int columns = 4;
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.begin(), text.end(), number, std::chars_format::fixed, decimals).ptr;
    return QString::fromLatin1(text.data(), end - text.data()).rightJustified(columns);
}

} // namespace

QString formattedSpeed(quint64 bytes) {
    const auto plain = static_cast<double>(bytes);
    const double kilobytes = plain / bytesInAKilobyte;
    const double megabytes = kilobytes / bytesInAKilobyte;
    if (megabytes >= 1.0)
        return padded(megabytes, 1) + QStringLiteral("MB");
    if (kilobytes >= 1.0)
        return padded(kilobytes, 0) + QStringLiteral("KB");
    return padded(plain, 0) + QStringLiteral(" B");
}

NetworkMonitor::NetworkMonitor(const Ports &ports) : m_ports(ports) {
    ports.path.start([self = QPointer(this)](PathStatus status) {
        if (!self)
            return;
        self->m_isConnected = status == PathStatus::satisfied;
        Q_EMIT self->published();
    });
    startMeter();
}

void NetworkMonitor::startMeter() {
    if (m_timer)
        return;
    m_isFirstCheck = true;
    m_timer = m_ports.time.repeat(sampleInterval, [this] { sample(); });
}

void NetworkMonitor::sample() {
    const auto interfaces = m_ports.counters.interfaces();
    if (!interfaces)
        return;
    quint64 received = 0;
    quint64 sent = 0;
    for (const InterfaceAddress &entry : *interfaces) {
        if (!counts(entry))
            continue;
        received += entry.data->inputBytes;
        sent += entry.data->outputBytes;
    }
    const quint64 receivedBefore = std::exchange(m_previousBytesReceived, received);
    const quint64 sentBefore = std::exchange(m_previousBytesSent, sent);
    if (std::exchange(m_isFirstCheck, false))
        return;
    m_ports.time.async(
        this, [this, in = growth(receivedBefore, received), out = growth(sentBefore, sent)] { publish(in, out); });
}

void NetworkMonitor::publish(quint64 received, quint64 sent) {
    m_downloadSpeed = formattedSpeed(received);
    m_uploadSpeed = formattedSpeed(sent);
    Q_EMIT published();
}

} // namespace tavrine
