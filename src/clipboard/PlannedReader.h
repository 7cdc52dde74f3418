#pragma once

#include <memory>

struct sqlite3;

namespace tavrine {

/// A second connection to the database's file that reads the table as we say and not as SQLite guesses.
///
/// The statements of the store are words that do not change, and for two of them SQLite picks an index that makes them
/// several times slower than the table itself. On this connection their name `items` is a temporary view that is the
/// table read in one given order. The view lives in the connection and never in the file, which is opened for reading
/// only; what a statement gives is the same. Rows of equal rank may come in another order, which no statement promises.
///
/// Belongs to the queue of the database. Not being there costs nothing but time: whoever asks goes on with the main
/// connection.
class PlannedReader {
public:
    enum class Order {
        ofTheTable, ///< for what looks at every row
        byDate,     ///< newest first, for what ends after a few rows
    };

    /// A reader of the file that `db` has open; null when the file has another place by now or cannot be opened.
    [[nodiscard]] static std::unique_ptr<PlannedReader> open(sqlite3 *db, Order order);
    ~PlannedReader();
    PlannedReader(const PlannedReader &) = delete;
    PlannedReader &operator=(const PlannedReader &) = delete;

    [[nodiscard]] sqlite3 *db() const { return m_db; }
    /// False once another file stands in the place of this one.
    [[nodiscard]] bool isInPlace() const;
    /// Gives the pages back that the last statement read.
    void releasePages();

    /// True when every row's flags are 0 or 1, as they are written here; another program may have written others.
    [[nodiscard]] bool hasOnlyPlainFlags() const;
    /// True when the last statement failed because another program holds the file: the main connection would wait again
    /// for nothing.
    [[nodiscard]] bool isBusy() const;

private:
    explicit PlannedReader(sqlite3 *db) : m_db(db) {}

    sqlite3 *m_db;
};

} // namespace tavrine
