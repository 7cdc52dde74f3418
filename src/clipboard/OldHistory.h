#pragma once

#include "clipboard/ClipboardItem.h"

#include <QByteArray>

#include <optional>
#include <vector>

namespace tavrine {

/// Reads the history as versions without a database kept it in the preferences: a JSON array of objects with the keys
/// "id", "content" and "date" (seconds since 2001-01-01 UTC), and, where they apply, "isPinned", "isSaved" and
/// "imageFileName". An absent key and a null are the same.
///
/// None when anything in it has another type or lacks a required key, or when a date does not fit a double: such data
/// is not read in part.
[[nodiscard]] std::optional<std::vector<ClipboardItem>> decodeOldHistory(const QByteArray &json);

} // namespace tavrine
