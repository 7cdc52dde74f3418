#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tavrine {

/// Landlock: from now on this process reads files and folders below `folders` and nowhere else, and writes none. A
/// folder that is not there is no matter. No error where the kernel has no Landlock: the system call filter, which it
/// always has, then stands alone.
[[nodiscard]] std::optional<std::string> allowFilesOnlyIn(const std::vector<std::string> &folders);

} // namespace tavrine
