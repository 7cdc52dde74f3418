#pragma once

#include "base/Preference.h"

/// What the status item shows.
namespace tavrine::preference {

inline constexpr Preference<bool> showInMenuBar{"showInMenuBar", true};

/// Whether the icon is coloured while the machine is kept awake, and its colour as "#RRGGBB".
inline constexpr Preference<bool> keepAwakeShowBgIndicator{"keepAwakeShowBgIndicator", false};
inline constexpr Preference<QString> keepAwakeBgColor{"keepAwakeBgColor", "#007AFF"};

} // namespace tavrine::preference
