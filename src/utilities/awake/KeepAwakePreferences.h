#pragma once

#include "base/Preference.h"
#include "utilities/awake/KeepAwakeDuration.h"
#include "utilities/awake/KeepAwakeMode.h"

namespace tavrine::preference {

inline constexpr Preference<KeepAwakeMode> keepAwakeMode{"keepAwakeModeV2", KeepAwakeMode::displayAwake,
                                                         keepAwakeModeTexts};
inline constexpr Preference<KeepAwakeDuration> keepAwakeDuration{"keepAwakeDuration", KeepAwakeDuration::indefinite,
                                                                 keepAwakeDurationTexts};
inline constexpr Preference<bool> keepAwakeChargingOnly{"keepAwakeChargingOnly", false};
inline constexpr Preference<bool> keepAwakeScheduleEnabled{"keepAwakeScheduleEnabled", false};
inline constexpr Preference<bool> keepAwakeWeekdaysOnly{"keepAwakeWeekdaysOnly", true};

/// Seconds since midnight: 09:00 and 18:00.
inline constexpr Preference<qint64> keepAwakeScheduleStartSecs{"keepAwakeScheduleStartSecs", 32'400};
inline constexpr Preference<qint64> keepAwakeScheduleEndSecs{"keepAwakeScheduleEndSecs", 64'800};

} // namespace tavrine::preference
