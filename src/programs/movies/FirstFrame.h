#pragma once

#include "adapters/linux/MovieProtocol.h"
#include "programs/movies/MovieFile.h"

namespace tavrine {

/// Writes the frame at time 0 of the movie into `result`, with no edge longer than `longestEdge`, and reports it.
[[nodiscard]] movieProtocol::Report writeFirstFrame(MovieFile &movie, int longestEdge, int result);

} // namespace tavrine
