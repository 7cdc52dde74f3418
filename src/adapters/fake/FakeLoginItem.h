#pragma once

#include "ports/LoginItem.h"

#include <utility>

namespace tavrine {

/// A login item in memory.
class FakeLoginItem final : public LoginItem {
public:
    [[nodiscard]] bool isEnabled() const override { return m_isEnabled; }
    [[nodiscard]] bool registerItem() override { return change(true); }
    [[nodiscard]] bool unregisterItem() override { return change(false); }

    /// The desktop refuses the next action.
    void failNext() { m_failsNext = true; }

    /// The person switches the item elsewhere, in the desktop's own settings.
    void setEnabledOutside(bool isEnabled) { m_isEnabled = isEnabled; }

private:
    bool change(bool isEnabled) {
        if (std::exchange(m_failsNext, false))
            return false;
        m_isEnabled = isEnabled;
        return true;
    }

    bool m_isEnabled = false;
    bool m_failsNext = false;
};

} // namespace tavrine
