#pragma once

#include "base/StoredText.h"

#include <array>

namespace tavrine {

/// Which clipboard panel the trigger opens.
enum class ClipboardExperience { classic, search };

inline constexpr std::array clipboardExperienceTexts{
    StoredText{ClipboardExperience::classic, "classic"},
    StoredText{ClipboardExperience::search, "search"},
};

} // namespace tavrine
