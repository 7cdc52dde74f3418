#pragma once

#include "ports/StatusItem.h"

namespace tavrine {

class UserDefaults;

/// The image of the tray item while it shows no speed. While Keep Awake is on and the person wants it coloured, it is
/// a white symbol on a pill of the chosen colour; otherwise a template of the symbol alone.
[[nodiscard]] StatusImage statusIcon(bool isAwake, const UserDefaults &defaults);

} // namespace tavrine
