#pragma once

#include "base/StoredText.h"

#include <array>

namespace tavrine {

/// The person's choice of how long text should stay. It is kept and shown; no cleanup reads it.
enum class RetentionPeriod { tenMinutes, threeDays, thirtyDays };

inline constexpr std::array retentionPeriodTexts{
    StoredText{RetentionPeriod::tenMinutes, "10 Minutes"},
    StoredText{RetentionPeriod::threeDays, "3 Days"},
    StoredText{RetentionPeriod::thirtyDays, "30 Days"},
};

} // namespace tavrine
