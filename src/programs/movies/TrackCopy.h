#pragma once

#include "programs/movies/MovieFile.h"

#include <optional>
#include <string>

namespace tavrine {

/// Writes an MP4 movie into `result` that has the first video track of `movie` and nothing else, packet by packet, with
/// its index in front. `isUsed` as of `OpenFile`. Why there is no whole movie, otherwise.
[[nodiscard]] std::optional<std::string> copyVideoTrack(MovieFile &movie, int result,
                                                        const std::function<void()> &isUsed);

} // namespace tavrine
