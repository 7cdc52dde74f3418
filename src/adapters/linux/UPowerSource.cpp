#include "adapters/linux/UPowerSource.h"

#include "adapters/linux/BusValues.h"
#include "adapters/linux/SystemBus.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QTimer>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

const auto service = QStringLiteral("org.freedesktop.UPower");
const auto machinePath = QStringLiteral("/org/freedesktop/UPower");
const auto batteryPath = QStringLiteral("/org/freedesktop/UPower/devices/DisplayDevice"); // all batteries as one
const auto batteryInterface = QStringLiteral("org.freedesktop.UPower.Device");
const auto propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

const auto onBattery = QStringLiteral("OnBattery");
const auto isPresent = QStringLiteral("IsPresent");
const auto deviceType = QStringLiteral("Type");
constexpr uint battery = 2;
constexpr uint uninterruptibleSupply = 3;

// Readings are from memory, so nobody waits meanwhile.
constexpr auto longestAnswer = 24h;

} // namespace

void UPowerSource::followSoon() {
    if (!std::exchange(m_isFollowing, true))
        QTimer::singleShot(std::chrono::duration_cast<std::chrono::milliseconds>(m_delay), this,
                           [this] { systemBus::follow(this, [this](const QDBusConnection &bus) { onBusOpen(bus); }); });
}

QList<QVariantMap> UPowerSource::sources() {
    followSoon();
    if (!m_isOnBattery && !m_hasBattery)
        return {};
    return {{{QLatin1String(stateKey), QLatin1String(m_isOnBattery ? batteryPower : acPower)}}};
}

void UPowerSource::whenKnown(std::function<void()> known) {
    if (m_isKnown)
        return known();
    m_waiting.push_back(std::move(known));
    followSoon();
}

void UPowerSource::setKnown() {
    m_isKnown = true;
    for (const auto &known : std::exchange(m_waiting, {}))
        known();
}

void UPowerSource::onBusOpen(const QDBusConnection &bus) {
    if (!bus.isConnected())
        return setKnown();
    m_bus = bus;
    m_watcher = std::make_unique<QDBusServiceWatcher>(service, bus, QDBusServiceWatcher::WatchForOwnerChange);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &newOwner) {
                m_isOnBattery = false;
                m_hasBattery = false;
                ++m_owner;
                if (!newOwner.isEmpty())
                    ask();
                else
                    setKnown();
            });
    // No service name: with one, QtDBus would wait for the bus to tell who has it.
    for (const QString &path : {machinePath, batteryPath})
        m_bus->connect(QString(), path, propertiesInterface, QStringLiteral("PropertiesChanged"), this,
                       SLOT(onPropertiesChanged(QString, QVariantMap, QStringList)));
    ask();
}

/// The notice may be anybody's, so it is only a reason to ask. Most are of the charge, in which nobody is interested.
void UPowerSource::onPropertiesChanged(const QString & /*interface*/, const QVariantMap &changed,
                                       const QStringList &invalidated) {
    for (const QString &name : {onBattery, isPresent, deviceType})
        if (changed.contains(name) || invalidated.contains(name))
            return ask();
}

/// Starts UPower where it only waits for a question.
void UPowerSource::ask() {
    m_unanswered = 0;
    askFor(machinePath, service, &UPowerSource::takeMachine);
    askFor(batteryPath, batteryInterface, &UPowerSource::takeBattery);
}

void UPowerSource::askFor(const QString &path, const QString &interface,
                          void (UPowerSource::*take)(const QVariantMap &)) {
    auto call = QDBusMessage::createMethodCall(service, path, propertiesInterface, QStringLiteral("GetAll"));
    call << interface;
    ++m_unanswered;
    systemBus::ask(
        *m_bus, call, this,
        [this, take, owner = m_owner](const QDBusPendingCall &reply) {
            if (owner != m_owner)
                return;
            if (!reply.isError())
                (this->*take)(busValue<QVariantMap>(reply.reply().arguments().value(0), busMap));
            if (--m_unanswered <= 0)
                setKnown();
        },
        longestAnswer);
}

void UPowerSource::takeMachine(const QVariantMap &properties) {
    m_isOnBattery = properties.value(onBattery).toBool();
}

void UPowerSource::takeBattery(const QVariantMap &properties) {
    const uint type = properties.value(deviceType).toUInt();
    m_hasBattery = properties.value(isPresent).toBool() && (type == battery || type == uninterruptibleSupply);
}

} // namespace tavrine
