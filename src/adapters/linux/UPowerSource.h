#pragma once

#include "base/Date.h"
#include "ports/PowerSource.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

#include <memory>
#include <optional>
#include <vector>

namespace tavrine {

/// The power source as UPower has it, kept by its notices. The bus is opened a moment after it is first asked for, so
/// that a launch has the processor to itself.
class UPowerSource final : public QObject, public PowerSource {
    Q_OBJECT

public:
    explicit UPowerSource(Seconds delay = Seconds{1}) : m_delay(delay) {}

    [[nodiscard]] QList<QVariantMap> sources() override;
    void whenKnown(std::function<void()> known) override;

private Q_SLOTS:
    void onPropertiesChanged(const QString &interface, const QVariantMap &changed, const QStringList &invalidated);

private:
    void followSoon();
    void onBusOpen(const QDBusConnection &bus);
    void ask();
    void askFor(const QString &path, const QString &interface, void (UPowerSource::*take)(const QVariantMap &));
    void takeMachine(const QVariantMap &properties);
    void takeBattery(const QVariantMap &properties);
    void setKnown();

    const Seconds m_delay;
    bool m_isFollowing = false;
    std::optional<QDBusConnection> m_bus;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    int m_owner = 0;      ///< counts the daemons
    int m_unanswered = 0; ///< questions to the daemon of now
    bool m_isKnown = false;
    std::vector<std::function<void()>> m_waiting; ///< for that
    bool m_isOnBattery = false;
    bool m_hasBattery = false;
};

} // namespace tavrine
