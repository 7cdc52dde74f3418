#pragma once

#include "base/Date.h"

#include <QString>

namespace tavrine {

/// "02:07": whole minutes, of which there may be more than 59, and seconds.
[[nodiscard]] QString clockText(Seconds duration);

/// The size of a file as people read it: "Zero KB", "532 bytes", "48 KB", "1.2 MB", "3.45 GB", in thousands.
[[nodiscard]] QString fileSizeText(qint64 bytes);

/// "recording_" and the moment, in local time.
[[nodiscard]] QString recordingName(Date now);

} // namespace tavrine
