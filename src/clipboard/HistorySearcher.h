#pragma once

#include "clipboard/PlannedReader.h"
#include "clipboard/RecentRows.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

struct sqlite3;

namespace tavrine {

class CurrentRows;
class HistoryFile;

/// Finds the rows whose text contains a query: in memory where that is enough, else in the file, in the order in which
/// it takes least. Belongs to the queue of the database.
class HistorySearcher {
public:
    HistorySearcher(HistoryFile &file, CurrentRows &current) : m_file(file), m_current(current) {}

    /// At most `limit` rows: saved ones first, then pinned ones, newest first within each.
    [[nodiscard]] std::vector<ClipboardItem> search(const QString &query, qint64 limit);

private:
    /// What memory can say of a search; nothing when it is not current.
    RecentRows::Found searchRecent(const QByteArray &pattern, qint64 limit);
    /// By a planned reader. None when there is none, or when it failed for another reason than a file that is held by
    /// another program.
    std::optional<std::vector<ClipboardItem>> searchPlanned(const QByteArray &pattern, qint64 limit,
                                                            std::optional<double> shareOfRecent);
    static std::optional<std::vector<ClipboardItem>> searchOn(sqlite3 *db, const QByteArray &pattern, qint64 limit,
                                                              const PlannedReader *reader);

    HistoryFile &m_file;
    CurrentRows &m_current;
    std::unique_ptr<PlannedReader> m_everyMatch; ///< from the first search on that needs it
    std::unique_ptr<PlannedReader> m_newestMatches;
};

} // namespace tavrine
