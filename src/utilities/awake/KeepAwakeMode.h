#pragma once

#include "base/StoredText.h"
#include "ports/PowerAssertions.h"

#include <array>

namespace tavrine {

/// What stays awake.
enum class KeepAwakeMode { displayAwake, systemAwake, lidClosed };

inline constexpr StoredText<KeepAwakeMode> keepAwakeModeTexts[] = {
    {KeepAwakeMode::displayAwake, "displayAwake"},
    {KeepAwakeMode::systemAwake, "systemAwake"},
    {KeepAwakeMode::lidClosed, "lidClosed"},
};

/// What is fixed about a mode, in the order in which modes are offered.
struct KeepAwakeModeRow {
    KeepAwakeMode mode;
    const char *label;
    const char *subtitle;
    const char *statusName; ///< in the tip of the tray item
    PowerAssertionType assertion;
};

inline constexpr std::array<KeepAwakeModeRow, 3> keepAwakeModes{{
    {KeepAwakeMode::displayAwake, "Display", "Screen stays on", "Display Awake", PowerAssertionType::noDisplaySleep},
    {KeepAwakeMode::systemAwake, "System", "Screen may sleep", "System Awake", PowerAssertionType::noIdleSleep},
    {KeepAwakeMode::lidClosed, "Lid Closed", "Works with lid closed", "Lid Closed",
     PowerAssertionType::preventSystemSleep},
}};

[[nodiscard]] constexpr const KeepAwakeModeRow &rowOf(KeepAwakeMode mode) {
    return keepAwakeModes[static_cast<std::size_t>(mode)];
}

} // namespace tavrine
