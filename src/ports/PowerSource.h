#pragma once

#include <QList>
#include <QVariantMap>

#include <functional>

namespace tavrine {

/// What the machine draws its power from. Lives on the main thread, as long as the process.
///
///  1. A reading is from memory: it costs nothing and waits for nobody. The desktop tells of changes, which are known
///     within a second; before its first answer, and while there is nobody to ask, there are no sources.
///  2. A machine without a battery has no sources.
///  3. `whenKnown` tells that the first answer has come, or that there is nobody who could give one: within the call
///     where that is so already, else later and once. A desktop that hangs lets wait for it.
class PowerSource {
public:
    /// Under which a source says "AC Power" or "Battery Power".
    static constexpr auto stateKey = "Power Source State";
    static constexpr auto acPower = "AC Power";
    static constexpr auto batteryPower = "Battery Power";

    virtual ~PowerSource() = default;
    [[nodiscard]] virtual QList<QVariantMap> sources() = 0;
    virtual void whenKnown(std::function<void()> known) = 0;
};

} // namespace tavrine
