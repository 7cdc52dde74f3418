#pragma once

#include "clipboard/ChangeStamp.h"
#include "clipboard/RecentRows.h"

#include <optional>
#include <vector>

namespace tavrine {

class HistoryFile;

/// The rows in memory with the proof that they still stand: the change stamp of the file that they describe. Belongs
/// to the queue of the database, whose parts ask here before they believe memory and tell here what they wrote.
///
/// The proof takes the table to be the one made here: a program that gave it triggers or further unique columns would
/// be believed wrongly.
class CurrentRows {
public:
    explicit CurrentRows(HistoryFile &file) : m_file(file) {}

    /// True when memory knows rows and still describes the file; it forgets otherwise.
    [[nodiscard]] bool isCurrent();
    /// What memory knows. Whoever answers from it asks `isCurrent` first.
    [[nodiscard]] RecentRows &rows() { return m_rows; }
    /// Of the file that memory describes: rows with other flags rank above those that memory holds.
    [[nodiscard]] bool hasOnlyPlainFlags() const { return m_hasOnlyPlainFlags; }

    void forget() { m_rows.forget(); }
    /// What a load read, and what the file said of itself while the load held it; see `RecentRows::fill`.
    struct Load {
        std::vector<RecentRows::Row> rows;
        std::optional<ChangeStamp> stamp; ///< absent when the file cannot say: nothing is kept then
        bool hasOnlyPlainFlags = false;
        bool isCut = false;
    };
    void takeIn(const Load &load, std::optional<Date> since, qint64 limit);

    /// After a statement that wrote `writes` (0 or 1) transactions: true when memory knows rows and the file's stamp
    /// shows that write of ours and no other. The caller then tells `rows` what it wrote.
    [[nodiscard]] bool noteWrite(bool isDone, quint32 writes);
    [[nodiscard]] bool noteDeletion(bool isDone);

private:
    HistoryFile &m_file;
    RecentRows m_rows;
    std::optional<ChangeStamp> m_stamp;
    int m_generation = 0; ///< of the file
    bool m_hasOnlyPlainFlags = false;
};

} // namespace tavrine
