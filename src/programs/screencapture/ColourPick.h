#pragma once

#include "adapters/frozen/FrozenScreen.h"

namespace tavrine {

/// One pixel's colour, chosen with a magnifier over the frozen screen and written to the standard output as "#12ABEF"
/// and a new line.
///
/// The exit status: 0 when a pixel was taken, 1 when none was; then nothing is written. `stopDescriptor` becomes
/// readable when the process is asked to end.
[[nodiscard]] int pickColour(int stopDescriptor);

} // namespace tavrine
