#pragma once

#include "base/Date.h"
#include "ports/MovieWriter.h"

#include <QString>

namespace tavrine {

/// "02:07": whole minutes, of which there may be more than 59, and seconds.
[[nodiscard]] QString clockText(Seconds duration);

/// The size of a file as people read it: "Zero KB", "532 bytes", "48 KB", "1.2 MB", "3.45 GB", in thousands.
[[nodiscard]] QString fileSizeText(qint64 bytes);

/// "recording_" and the moment, in local time.
[[nodiscard]] QString recordingName(Date now);

/// Whether somebody wanted the end of a recording.
enum class RecordingEnd { wanted, byItself };

/// What a person is told of the end of a recording, when it is not what they think it is; else empty. `failure`: the
/// movie could not be written to its end. `isThere`: there is something to look at.
[[nodiscard]] QString endNotice(RecordingEnd end, std::optional<MovieWriterFailure> failure, bool isThere);

} // namespace tavrine
