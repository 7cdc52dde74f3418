#pragma once

#include "base/Date.h"
#include "ports/PowerSource.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

#include <memory>
#include <optional>

namespace tavrine {

/// The power source as UPower has it, kept by its notices. The bus is opened a moment after the first reading, so that
/// a launch has the processor to itself.
class UPowerSource final : public QObject, public PowerSource {
    Q_OBJECT

public:
    explicit UPowerSource(Seconds delay = Seconds{1}) : m_delay(delay) {}

    [[nodiscard]] QList<QVariantMap> sources() override;

private Q_SLOTS:
    void onPropertiesChanged(const QString &interface, const QVariantMap &changed, const QStringList &invalidated);

private:
    void onBusOpen(const QDBusConnection &bus);
    void ask();
    void askFor(const QString &path, const QString &interface, void (UPowerSource::*take)(const QVariantMap &));
    void takeMachine(const QVariantMap &properties);
    void takeBattery(const QVariantMap &properties);

    const Seconds m_delay;
    bool m_isFollowing = false;
    std::optional<QDBusConnection> m_bus;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    int m_owner = 0; ///< counts the daemons
    bool m_isOnBattery = false;
    bool m_hasBattery = false;
};

} // namespace tavrine
