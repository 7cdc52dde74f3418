#pragma once

#include "clipboard/ClipboardItem.h"

#include <QString>

namespace tavrine {

// The history as plain text for reading, in pieces: a title, the date of the export, an empty line, then one line for
// each item, with a line feed between two.
[[nodiscard]] QString exportHeader(Date now);
[[nodiscard]] QString exportLine(const ClipboardItem &item);

/// The bare name of an export made at `now`.
[[nodiscard]] QString exportFileName(Date now);

} // namespace tavrine
