#pragma once

#include <optional>
#include <string_view>

namespace tavrine {

/// The number under `key`, a whole path, in a file of dconf's. None where nobody has set it, where it is no number, and
/// where the bytes are no such file: they are a stranger's.
[[nodiscard]] std::optional<double> numberInDconf(std::string_view file, std::string_view key);

} // namespace tavrine
