#pragma once

#include "ports/PowerSource.h"

#include <utility>
#include <vector>

namespace tavrine {

/// A machine without a battery, until the test gives it one.
class FakePowerSource final : public PowerSource {
public:
    [[nodiscard]] QList<QVariantMap> sources() override {
        ++m_readings;
        return m_isSilent ? QList<QVariantMap>() : m_sources;
    }
    void whenKnown(std::function<void()> known) override {
        if (m_isSilent)
            m_waiting.push_back(std::move(known));
        else
            known();
    }

    void setPluggedIn(bool isPluggedIn) {
        m_sources = {{{QLatin1String(stateKey), QLatin1String(isPluggedIn ? acPower : batteryPower)}}};
    }
    void setSources(const QList<QVariantMap> &sources) { m_sources = sources; }
    [[nodiscard]] int readings() const { return m_readings; }

    /// The desktop answers nothing yet, until `answer`.
    void beSilent() { m_isSilent = true; }
    void answer() {
        m_isSilent = false;
        for (const auto &known : std::exchange(m_waiting, {}))
            known();
    }

private:
    QList<QVariantMap> m_sources;
    std::vector<std::function<void()>> m_waiting;
    bool m_isSilent = false;
    int m_readings = 0;
};

} // namespace tavrine
