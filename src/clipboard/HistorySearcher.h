#pragma once

#include "clipboard/PlannedReader.h"
#include "clipboard/RecentRows.h"

#include <QByteArray>
#include <QString>

#include <functional>
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

    using Items = std::vector<ClipboardItem>;

    /// At most `limit` rows: saved ones first, then pinned ones, newest first within each. Rows whose text is cut are
    /// there only when the whole of it contains the query as people read it, which nobody can see from the beginning.
    /// None when `stop` said true meanwhile.
    [[nodiscard]] std::optional<Items> search(const QString &query, qint64 limit,
                                              const std::function<bool()> &stop = {});

    /// Those of `cutItems` whose whole text contains `text` as people read it. None when `stop` said true meanwhile.
    [[nodiscard]] std::optional<Items> filter(const Items &cutItems, const QString &text,
                                              const std::function<bool()> &stop);

private:
    struct Wanted {
        const QString &query;
        QByteArray pattern;
        qint64 limit;
        const std::function<bool()> &stop;
    };
    /// What memory can say of a search; nothing when it is not current.
    RecentRows::Found searchRecent(const Wanted &wanted);
    /// By a planned reader. None when there is none, or when it failed for another reason than a file that is held by
    /// another program.
    std::optional<Items> searchPlanned(const Wanted &wanted, std::optional<double> shareOfRecent);
    static std::optional<Items> searchOn(sqlite3 *db, const Wanted &wanted, const PlannedReader *reader);

    HistoryFile &m_file;
    CurrentRows &m_current;
    int m_generation = 0;                        ///< of the file that the readers read
    std::unique_ptr<PlannedReader> m_everyMatch; ///< from the first search on that needs it
    std::unique_ptr<PlannedReader> m_newestMatches;
};

} // namespace tavrine
