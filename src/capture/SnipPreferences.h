#pragma once

#include "base/Preference.h"

namespace tavrine::preference {

inline constexpr Preference<bool> snipMuteSound{"snipMuteSound", false};
/// Whether captures are saved without asking.
inline constexpr Preference<bool> snipUseSaveDefault{"snipUseSaveDefault", false};
/// A folder for saved captures in place of the standard one.
inline constexpr Preference<QString> snipSaveDirectoryPath{"snipSaveDirectoryPath"};

} // namespace tavrine::preference
