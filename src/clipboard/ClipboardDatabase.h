#pragma once

#include "base/SerialQueue.h"
#include "clipboard/ClipboardItem.h"
#include "clipboard/HistoryRead.h"
#include "clipboard/RowPruner.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
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
///     may be called from work that already runs there. Readings that are begun and not waited for run there too, and
///     step back for every operation that is.
///  2. Each write is on disk when the operation returns. There are no transactions over several statements.
///  3. Failures are quiet: what cannot be read gives empty results. A row that cannot be written, because another
///     program holds the file or the disk takes nothing, is kept in order and written when that is over (see
///     `UnwrittenRows`); until then the history shows it. An operation waits one second for a file that is held, and
///     the next ones not at all.
///  4. A protected row disappears only by `remove` of that very row.
///  5. What memory answers in place of a statement (see `RecentRows`) is what the statement would have answered: only
///     while the file itself proves that no write but ours came in between (see `CurrentRows`).
///  6. Lists hold of a long text the beginning alone (see `CutText.h`), so that what memory takes does not depend on
///     what somebody copied.
///  7. The file that stands at the path is the one that is used, whoever put it there (see `HistoryFile`).
class ClipboardDatabase {
public:
    using Pruned = RowPruner::Pruned;
    struct Clearing {
        enum class State {
            waits,
            failed, ///< for good: the history stands
            done
        };
        State state = State::done;
        QStringList fileNames; ///< that have no row any more; of one that waits for room on the disk, will have none
        bool operator==(const Clearing &) const = default;
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

    /// Over the row with its id. Of an item that is cut the text in the file stays.
    void save(const ClipboardItem &item);
    /// The same for a new copy whose duplicate was looked for: should the row have to wait, it takes the place of those
    /// that are found then, or gives way to a protected one.
    void record(const ClipboardItem &item);
    /// The same for a new text without the look before: it takes the place of the unprotected row with that text. False
    /// when a protected row has it, which stays as it is. For a thread that may wait as long as a large text takes.
    [[nodiscard]] bool recordText(const ClipboardItem &item);
    void remove(const QUuid &id);
    /// The text of which a cut item has the beginning. None when its row is gone or cannot be read.
    [[nodiscard]] std::optional<QString> wholeText(const ClipboardItem &item);
    /// Every row, whole, in the order of `loadAll`, with what waits to be written. `take` runs on the queue.
    void forEachRow(const std::function<void(const ClipboardItem &)> &take);
    /// What stands in the file.
    [[nodiscard]] std::vector<ClipboardItem> loadAll(std::optional<Date> since, qint64 limit);
    [[nodiscard]] std::vector<ClipboardItem> loadProtectedAndRecent(std::optional<Date> since, qint64 limit);
    [[nodiscard]] std::vector<ClipboardItem> search(const QString &query, qint64 limit);
    /// The same without waiting. Of the cut items those alone that contain the query as people read it.
    [[nodiscard]] std::shared_ptr<HistoryRead> beginSearch(const QString &query, qint64 limit,
                                                           std::function<void()> whenDone);
    /// Those of `cutItems` that contain `text` as people read it.
    [[nodiscard]] std::shared_ptr<HistoryRead> beginFilter(std::vector<ClipboardItem> cutItems, const QString &text,
                                                           std::function<void()> whenDone);
    /// Whole, as the only one beside `loadAll`.
    [[nodiscard]] std::optional<ClipboardItem> findDuplicate(const std::optional<QString> &imageFileName,
                                                             const QString &content);
    Pruned prune(bool imagesOnly, std::optional<Date> before, std::optional<qint64> keepNewest);
    /// The files that have no row any more. Where the clear has to wait, the history is empty at once, its rows and
    /// their files go together, and `finishClear` tells of those.
    [[nodiscard]] QStringList clearUnprotected();
    /// What has come of the last clear, with the files that one which had to wait has left without a row.
    [[nodiscard]] Clearing finishClear();
    [[nodiscard]] Counts counts();
    /// The files that rows name. None when they cannot be known for certain: the file cannot be read, rows wait to be
    /// written, or another history was set aside and may come back.
    [[nodiscard]] std::optional<QSet<QString>> imageFileNames();

    /// True when an operation would wait for another program that holds the file. Asked without waiting.
    [[nodiscard]] bool wouldWait();
    /// Waits for that program as long as an operation does, so that the next ones do not. For a thread that may wait.
    void awaitOther();
    /// True when there is something to see to: somebody else changed, replaced or removed the file, or rows wait to be
    /// written. It costs a look at the file and waits for nothing; the next operation sees to it.
    [[nodiscard]] bool needsALook() const;

private:
    struct Parts;
    using Reading = std::function<std::optional<std::vector<ClipboardItem>>(const std::function<bool()> &stop)>;

    /// Runs `work` on the queue, between a look at the file before and one after it.
    template <class Work>
    auto perform(Work work);
    std::shared_ptr<HistoryRead> begin(Reading reading, std::function<void()> whenDone);
    void continueReading(const Reading &reading, const std::shared_ptr<HistoryRead> &read);

    std::unique_ptr<Parts> m_parts; ///< used on the queue alone
    std::atomic<int> m_waiting{0};  ///< operations whose callers wait: readings step back for them
    SerialQueue m_queue;            ///< last: its work uses the rest
};

} // namespace tavrine
