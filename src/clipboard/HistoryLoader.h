#pragma once

#include "clipboard/CurrentRows.h"

#include <optional>
#include <vector>

struct sqlite3;

namespace tavrine {

class PlannedReader;

/// Loads the history: all protected rows and the newest others. From memory where it stands, else by the statement,
/// which fills memory on the way. Belongs to the queue of the database.
class HistoryLoader {
public:
    HistoryLoader(HistoryFile &file, CurrentRows &current) : m_file(file), m_current(current) {}

    /// Every protected row, and at most `limit` of the others that are newer than `since`. While another program holds
    /// the file, what was loaded last stands for it.
    [[nodiscard]] std::vector<ClipboardItem> load(std::optional<Date> since, qint64 limit);
    /// What was loaded last; it shares its texts with whoever asked for it.
    [[nodiscard]] const std::vector<ClipboardItem> &lastAnswer() const { return m_lastAnswer; }
    /// Reads what `load` will be asked for, unless memory has it.
    void warmUp();

private:
    struct Request {
        std::optional<Date> since;
        qint64 wanted = 0;                ///< rows that the caller gets at most, protected ones included
        std::size_t longestProtected = 0; ///< the longest text that a protected row holds whole
        qint64 rowLimit = 0; ///< rows that are read: as many as memory can keep, for the statement costs the same
    };
    /// None when the file cannot be read.
    std::optional<std::vector<ClipboardItem>> loadByStatement(std::optional<Date> since, qint64 limit);
    std::vector<ClipboardItem> remembered(std::vector<ClipboardItem> answer, std::optional<Date> since);
    /// The rows by the planned reader, or by the main connection where that one cannot. None when neither could.
    std::optional<CurrentRows::Load> run(const Request &request, PlannedReader *reader);
    std::optional<CurrentRows::Load> runOn(sqlite3 *db, const Request &request, const PlannedReader *reader);

    HistoryFile &m_file;
    CurrentRows &m_current;
    std::vector<ClipboardItem> m_lastAnswer; ///< for as long as the file cannot be read
};

} // namespace tavrine
