#pragma once

#include "programs/screencapture/PngEncoder.h"

#include <functional>
#include <string>

namespace tavrine {

/// Why a file at `path` could not be written, as far as that can be told beforehand; 0 when nothing speaks against it.
/// The number is one of errno's.
[[nodiscard]] int whyNotWritable(const std::string &path);

/// Writes the pieces as one file that is there whole or not at all, whenever and however the process ends: it has no
/// name until its last byte is written. A file that stood at `path` is replaced. Only the owner may read it.
///
/// `isStopped` is asked right before the name is given. Returns 0, or errno's number; ECANCELED when it was stopped.
[[nodiscard]] int writeWholeFile(const std::string &path, const FilePieces &pieces,
                                 const std::function<bool()> &isStopped);

} // namespace tavrine
