#pragma once

#include "clipboard/ClipboardItem.h"

#include <QString>

#include <vector>

namespace tavrine {

/// The history as plain text for reading: a title, the date of the export, an empty line, then one line for each item.
[[nodiscard]] QString exportText(const std::vector<ClipboardItem> &items, Date now);

/// The bare name of an export made at `now`.
[[nodiscard]] QString exportFileName(Date now);

} // namespace tavrine
