#pragma once

#include "adapters/linux/NarrationProtocol.h"

#include <QString>

namespace tavrine {

/// What a person hears of it, in their language: "Area of 120 × 80 at 10, 20". Empty of the screen.
[[nodiscard]] QString narratedWords(const NarratedPlace &place);

/// What the keys do; heard once.
[[nodiscard]] QString narratedKeys();

} // namespace tavrine
