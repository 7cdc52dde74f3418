#pragma once

#include "walls/LockDown.h"

#include <cstdint>

namespace tavrine {

/// For a process that decodes what may be hostile: it keeps what it has open, memory and time, and writes `mostOutput`
/// bytes at most into any file. No file is opened any more, no thread and no program is started. To be called with the
/// libraries loaded and the movie not yet read.
[[nodiscard]] LockDownError lockMovieReader(std::uint64_t mostOutput, std::uint64_t mostSeconds);

} // namespace tavrine
