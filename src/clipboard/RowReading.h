#pragma once

#include "clipboard/CutText.h"
#include "clipboard/RecentRows.h"

#include <QByteArray>

#include <optional>

struct sqlite3;

namespace tavrine {

class Statement;

/// The row that `statement` stands on, its columns in the order of the store's own statements. A row whose id is no
/// UUID gets a fresh one, so that no update or delete of the item reaches it.
[[nodiscard]] RecentRows::Row readRow(const Statement &statement);

/// The same for a list: of a long text the beginning alone. `isPlanned`: the statement runs on a planned reader, which
/// cuts by itself. `longestProtected`: how long a text a protected row may hold whole.
[[nodiscard]] RecentRows::Row readListRow(const Statement &statement, bool isPlanned,
                                          std::size_t longestProtected = longestWholeText);

/// The whole text of the row with that id; none when there is no such row or it cannot be read.
[[nodiscard]] std::optional<QString> readWholeText(sqlite3 *db, const QUuid &id);

/// The one number that a counting statement gives; 0 when it fails.
[[nodiscard]] int readCount(sqlite3 *db, const QByteArray &sql);

/// What reading the row for a list gives after `item` was saved: bound text ends at its first NUL.
[[nodiscard]] ClipboardItem asItReadsBack(ClipboardItem item);

} // namespace tavrine
