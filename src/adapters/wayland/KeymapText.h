#pragma once

#include "base/Descriptor.h"

#include <cstdint>
#include <string>

namespace tavrine {

/// The description of a keyboard out of the file in which the compositor hands it over, without the zero at its end.
/// Empty where there are not as many bytes as promised, or more than any keyboard needs.
///
/// It is read and not mapped: a mapping of what is not there, or of what is cut off afterwards, ends the process.
[[nodiscard]] std::string keymapText(const Descriptor &file, std::uint32_t bytes);

} // namespace tavrine
