#pragma once

#include <QString>

#include <array>
#include <optional>

namespace tavrine {

/// The person's choice of how long text should stay. It is kept and shown; no cleanup reads it.
enum class RetentionPeriod { tenMinutes, threeDays, thirtyDays };

inline constexpr std::array allRetentionPeriods{RetentionPeriod::tenMinutes, RetentionPeriod::threeDays,
                                                RetentionPeriod::thirtyDays};

/// The text under which the choice is stored, and its way back. None for any other text.
[[nodiscard]] QString rawValue(RetentionPeriod period);
[[nodiscard]] std::optional<RetentionPeriod> retentionPeriodFromRawValue(const QString &text);

} // namespace tavrine
