#pragma once

#include <QList>
#include <QVariantMap>

namespace tavrine {

/// What the machine draws its power from. Lives on the main thread, as long as the process.
///
///  1. A reading is from memory: it costs nothing and waits for nobody. The desktop tells of changes, which are known
///     within a second; before its first answer, and while there is nobody to ask, there are no sources.
///  2. A machine without a battery has no sources.
class PowerSource {
public:
    /// Under which a source says "AC Power" or "Battery Power".
    static constexpr auto stateKey = "Power Source State";
    static constexpr auto acPower = "AC Power";
    static constexpr auto batteryPower = "Battery Power";

    virtual ~PowerSource() = default;
    [[nodiscard]] virtual QList<QVariantMap> sources() = 0;
};

} // namespace tavrine
