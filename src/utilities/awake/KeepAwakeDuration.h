#pragma once

#include "base/Date.h"
#include "base/StoredText.h"

#include <array>
#include <optional>

namespace tavrine {

/// How long the machine is kept awake.
enum class KeepAwakeDuration { fifteenMinutes, oneHour, twoHours, indefinite };

inline constexpr StoredText<KeepAwakeDuration> keepAwakeDurationTexts[] = {
    {KeepAwakeDuration::fifteenMinutes, "fifteenMinutes"},
    {KeepAwakeDuration::oneHour, "oneHour"},
    {KeepAwakeDuration::twoHours, "twoHours"},
    {KeepAwakeDuration::indefinite, "indefinite"},
};

/// What is fixed about a duration, in the order in which durations are offered.
struct KeepAwakeDurationRow {
    KeepAwakeDuration duration;
    const char *label;
    std::optional<Seconds> length; ///< none: until somebody ends it
};

inline constexpr std::array<KeepAwakeDurationRow, 4> keepAwakeDurations{{
    {KeepAwakeDuration::fifteenMinutes, "15 min", Seconds{900}},
    {KeepAwakeDuration::oneHour, "1 hr", Seconds{3600}},
    {KeepAwakeDuration::twoHours, "2 hrs", Seconds{7200}},
    {KeepAwakeDuration::indefinite, "Indefinite", std::nullopt},
}};

[[nodiscard]] constexpr const KeepAwakeDurationRow &rowOf(KeepAwakeDuration duration) {
    return keepAwakeDurations[static_cast<std::size_t>(duration)];
}

} // namespace tavrine
