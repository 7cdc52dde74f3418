#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tavrine {

/// Landlock: from now on this process reads what `places` name, files and whole folders, and nothing else, and writes
/// nowhere. A place that is not there is no matter. No error where the kernel has no Landlock: the filter of system
/// calls, which it always has, then stands alone.
[[nodiscard]] std::optional<std::string> allowFilesOnlyIn(const std::vector<std::string> &places);

} // namespace tavrine
