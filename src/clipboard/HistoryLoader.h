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

    /// Every protected row, and at most `limit` of the others that are newer than `since`.
    [[nodiscard]] std::vector<ClipboardItem> load(std::optional<Date> since, qint64 limit);
    /// Reads what `load` will be asked for, unless memory has it.
    void warmUp();

private:
    struct Request {
        std::optional<Date> since;
        qint64 wanted = 0;   ///< rows that the caller gets at most, protected ones included
        qint64 rowLimit = 0; ///< rows that are read: as many as memory can keep, for the statement costs the same
    };
    std::vector<ClipboardItem> loadByStatement(std::optional<Date> since, qint64 limit);
    /// The rows by the planned reader, or by the main connection where that one cannot. None when neither could.
    std::optional<CurrentRows::Load> run(const Request &request, PlannedReader *reader);
    std::optional<CurrentRows::Load> runOn(sqlite3 *db, const Request &request, const PlannedReader *reader);

    HistoryFile &m_file;
    CurrentRows &m_current;
};

} // namespace tavrine
