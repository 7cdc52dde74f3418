#pragma once

#include "clipboard/RecentRows.h"

#include <QByteArray>

#include <vector>

struct sqlite3;

namespace tavrine {

class Statement;

/// The row that `statement` stands on, its columns in the order of the store's own statements. A row whose id is no
/// UUID gets a fresh one, so that no update or delete of the item reaches it.
[[nodiscard]] RecentRows::Row readRow(const Statement &statement);

/// Every row that is left of `statement`, as far as it can be read.
[[nodiscard]] std::vector<ClipboardItem> readItems(Statement &statement);

/// The one number that a counting statement gives; 0 when it fails.
[[nodiscard]] int readCount(sqlite3 *db, const QByteArray &sql);

/// What reading the row gives after `item` was saved: bound text ends at its first NUL.
[[nodiscard]] ClipboardItem asItReadsBack(ClipboardItem item);

} // namespace tavrine
