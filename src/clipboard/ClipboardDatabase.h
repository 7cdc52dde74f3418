#pragma once

#include "base/SerialQueue.h"
#include "clipboard/ChangeStamp.h"
#include "clipboard/ClipboardItem.h"
#include "clipboard/PlannedReader.h"
#include "clipboard/RecentRows.h"

#include <QByteArrayList>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

struct sqlite3;

namespace tavrine {

/// The one persistent store of the clipboard history: one SQLite file with one table of rows.
///
/// One object for the process, made at first use and never closed. It knows nothing of pasteboards or images: it
/// holds rows, and hands back the names of the files that a deletion left without a row.
///
///  1. All access to the connection runs on `queue`, a serial queue, and every operation waits for it. No operation
///     may be called from work that already runs there.
///  2. Each write is on disk when the operation returns. There are no transactions over several statements.
///  3. Failures are quiet: a file that cannot be opened, read or written gives empty results and loses the write.
///  4. A protected row disappears only by `remove` of that very row.
///  5. What memory answers in place of a statement (see `RecentRows`) is what the statement would have answered: only
///     while the file's change stamp says that no write but ours came in between. This takes the table to be the one
///     made here: a program that gave it triggers or further unique columns would be believed wrongly.
class ClipboardDatabase {
public:
    struct Pruned {
        QStringList imageFileNames; ///< files that lost their row
        int deletedCount = 0;
        bool operator==(const Pruned &) const = default;
    };
    struct Counts {
        int total = 0;
        int pinned = 0;
        int images = 0;
        bool operator==(const Counts &) const = default;
    };

    /// Opens the file at `path` and brings its schema up to date; its folder is made.
    explicit ClipboardDatabase(const QString &path);
    ~ClipboardDatabase();
    ClipboardDatabase(const ClipboardDatabase &) = delete;
    ClipboardDatabase &operator=(const ClipboardDatabase &) = delete;

    /// Reads on the queue, while the caller goes on, what `loadProtectedAndRecent` will be asked for. The next
    /// operation waits for it.
    void warmUp();

    void save(const ClipboardItem &item);
    void remove(const QUuid &id);
    [[nodiscard]] std::vector<ClipboardItem> loadAll(std::optional<Date> since, qint64 limit);
    [[nodiscard]] std::vector<ClipboardItem> loadProtectedAndRecent(std::optional<Date> since, qint64 limit);
    [[nodiscard]] std::vector<ClipboardItem> search(const QString &query, qint64 limit);
    [[nodiscard]] std::optional<ClipboardItem> findDuplicate(const std::optional<QString> &imageFileName,
                                                             const QString &content);
    Pruned prune(bool imagesOnly, std::optional<Date> before, std::optional<qint64> keepNewest);
    [[nodiscard]] QStringList clearUnprotected();
    [[nodiscard]] Counts counts();

private:
    // All of these run on the queue.
    std::vector<ClipboardItem> loadByStatement(std::optional<Date> since, qint64 limit);
    /// What memory can say of a search; nothing when it is not current.
    RecentRows::Found searchRecent(const QByteArray &pattern, qint64 limit);
    /// None when the search failed for another reason than a file that is held by another program.
    static std::optional<std::vector<ClipboardItem>> searchOn(sqlite3 *db, const QByteArray &pattern, qint64 limit,
                                                              const PlannedReader *reader);
    /// Appends what the selection gives; false when it did not run to its end.
    bool selectForPruning(bool imagesOnly, std::optional<Date> before, std::optional<qint64> keepNewest,
                          QByteArrayList &ids, QStringList &imageFileNames);
    /// True when memory proves that no row with a file would be pruned.
    bool isNothingToPrune(std::optional<Date> before, std::optional<qint64> keepNewest);
    /// True when `m_recent` is warm and still describes the file; it forgets otherwise.
    bool isRecentCurrent();
    /// After a statement that wrote: the same, when the file's stamp shows that transaction of ours and no other.
    bool noteWrite(bool isDone, quint32 writes);
    bool noteDeletion(bool isDone);
    void forgetRows(const QByteArrayList &ids);

    sqlite3 *m_db = nullptr;
    RecentRows m_recent;
    std::optional<ChangeStamp> m_stamp; ///< of the file that `m_recent` describes
    bool m_hasOnlyPlainFlags = false;   ///< of that file: rows with others rank above those that `m_recent` holds
    std::unique_ptr<PlannedReader> m_searcher; ///< from the first search on that needs it
    std::unique_ptr<PlannedReader> m_newestSearcher;
    Seconds m_lookAhead{3600}; ///< how far beyond its cut-off a pruning looks for rows with a file
    SerialQueue m_queue;       ///< last: its work uses the rest
};

} // namespace tavrine
