#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace tavrine {

/// What is held off.
struct PowerNeeds {
    bool display = false;   ///< the screen blanks or locks
    bool idleSleep = false; ///< the machine suspends by itself
    bool sleep = false;     ///< the machine suspends, whoever asks for it
    bool lid = false;       ///< the machine suspends because its lid is closed
    [[nodiscard]] bool isEmpty() const { return *this == PowerNeeds{}; }
    bool operator==(const PowerNeeds &) const = default;
};

/// One of the services of a desktop that can hold something off. Lives on the main thread; no call waits for anybody.
///
/// It keeps up what is wanted of it by itself: a service that is started anew is asked again, one that answers late is
/// believed then, and what is not wanted any more when its answer comes is given back.
class PowerKeeper {
public:
    virtual ~PowerKeeper() = default;

    /// What it is to hold off from now on, of that as much as it can; nothing gives everything back. People read `why`
    /// in lists of what keeps the machine awake.
    virtual void want(const PowerNeeds &needs, const QString &why) = 0;
    /// What it has agreed to hold off.
    [[nodiscard]] virtual PowerNeeds held() const = 0;
    /// Whether an answer is still to come.
    [[nodiscard]] virtual bool isAsking() const = 0;

    /// Called in a turn of its own after one of the two has changed.
    void setOnChange(std::function<void()> onChange) { m_onChange = std::move(onChange); }

protected:
    void changed() const {
        if (m_onChange)
            m_onChange();
    }

private:
    std::function<void()> m_onChange;
};

using PowerKeepers = std::vector<std::unique_ptr<PowerKeeper>>;

} // namespace tavrine
