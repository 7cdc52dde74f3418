#pragma once

#include "base/CaseInsensitiveText.h"
#include "clipboard/LikePattern.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <optional>

struct sqlite3;
struct sqlite3_context;
struct sqlite3_value;

namespace tavrine {

class BusyWait;

/// A second connection to the database's file that reads the table as we say and not as SQLite guesses.
///
/// The statements of the store are words that do not change, and for two of them SQLite picks an index that makes them
/// several times slower than need be. On this connection their name `items` is a temporary view: the same table in a
/// given order, without rows that the statement would drop anyway. The view lives in the connection and never in the
/// file, which is opened for reading only. What a statement gives is the same; rows of equal rank may come in another
/// order, which no statement promises, and of a long text only the beginning comes, with what is known of the whole
/// behind it (see `CutText.h`), for rows whose whole text can be had by their id.
///
/// Belongs to the queue of the database. Not being there costs nothing but time: whoever asks goes on with the main
/// connection.
class PlannedReader {
public:
    enum class View {
        newestRows,    ///< for the history: the newest unprotected rows, as many as are wanted, and every protected one
        newestMatches, ///< for a search: the newest unprotected rows that match, as many as are wanted, and every
                       ///< protected one. Only for a table whose flags are plain
        everyMatch,    ///< for a search: every row that matches
    };

    /// A reader of the file that `db` has open; null when the file has another place by now or cannot be opened.
    [[nodiscard]] static std::unique_ptr<PlannedReader> open(sqlite3 *db, View view, BusyWait *busyWait = nullptr);
    ~PlannedReader();
    PlannedReader(const PlannedReader &) = delete;
    PlannedReader &operator=(const PlannedReader &) = delete;

    [[nodiscard]] sqlite3 *db() const { return m_db; }
    /// How many rows the history wants at most.
    void want(qint64 limit);
    /// What the next search is for. Without it no row matches. Of the rows that match, those whose cut text does not
    /// contain `text` as people read it are marked so.
    void want(const QByteArray &pattern, qint64 limit, const QString &text = {});
    /// How many bytes of long texts a statement may read before it fails; 0 for any number.
    void setLongTextBudget(std::size_t bytes);
    /// True when the last statement failed for that.
    [[nodiscard]] bool isOverBudget() const { return m_budget > 0 && m_longBytes > m_budget; }
    /// Asked now and then while a statement runs; it fails once the answer is true.
    void setStop(std::function<bool()> stop) { m_stop = std::move(stop); }

    /// False once another file stands in the place of this one.
    [[nodiscard]] bool isInPlace() const;
    /// Gives the pages back that the last statement read.
    void releasePages();

    /// True when every row's flags are 0 or 1, as they are written here; another program may have written others.
    [[nodiscard]] bool hasOnlyPlainFlags() const;
    /// True when the last statement failed because another program holds the file: the main connection would wait again
    /// for nothing.
    [[nodiscard]] bool isBusy() const;

    /// True when `readRow` may say so of a cut text: it does not contain the wanted text.
    static constexpr char doesNotContain = '-';

private:
    PlannedReader() = default;
    /// beginning(TEXT, ID): what comes of a row's text.
    static void beginning(sqlite3_context *context, int, sqlite3_value **arguments);
    [[nodiscard]] bool make(const char *path, View view, BusyWait *busyWait);

    sqlite3 *m_db = nullptr;
    std::optional<LikePattern> m_pattern;
    std::optional<CaseInsensitiveText> m_text;
    qint64 m_limit = 0;
    std::function<bool()> m_stop;
    std::size_t m_budget = 0;
    std::size_t m_longBytes = 0; ///< read since the budget was set
};

} // namespace tavrine
