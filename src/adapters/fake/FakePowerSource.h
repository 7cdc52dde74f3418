#pragma once

#include "ports/PowerSource.h"

namespace tavrine {

/// A machine without a battery, until the test gives it one.
class FakePowerSource final : public PowerSource {
public:
    [[nodiscard]] QList<QVariantMap> sources() override {
        ++m_readings;
        return m_sources;
    }

    void setPluggedIn(bool isPluggedIn) {
        m_sources = {{{QLatin1String(stateKey), QLatin1String(isPluggedIn ? acPower : batteryPower)}}};
    }
    void setSources(const QList<QVariantMap> &sources) { m_sources = sources; }
    [[nodiscard]] int readings() const { return m_readings; }

private:
    QList<QVariantMap> m_sources;
    int m_readings = 0;
};

} // namespace tavrine
