#pragma once

#include "base/Preference.h"

/// What the updater keeps.
namespace tavrine::preference {

/// Whether it looks by itself, once a day.
inline constexpr Preference<bool> updatesCheckAutomatically{"updatesCheckAutomatically", true};
/// When the last look that was answered began.
inline constexpr Preference<Date> updatesLastCheck{"updatesLastCheck", Date::distantPast()};
/// The newer version that the person was told of last.
inline constexpr Preference<QString> updatesToldVersion{"updatesToldVersion", ""};

} // namespace tavrine::preference
