#pragma once

#include "base/SerialQueue.h"
#include "clipboard/ClipboardItem.h"
#include "clipboard/RowPruner.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

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
///     while the file itself proves that no write but ours came in between (see `CurrentRows`).
class ClipboardDatabase {
public:
    using Pruned = RowPruner::Pruned;
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
    struct Parts;

    std::unique_ptr<Parts> m_parts; ///< used on the queue alone
    SerialQueue m_queue;            ///< last: its work uses the rest
};

} // namespace tavrine
