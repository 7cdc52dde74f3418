#pragma once

#include "base/Date.h"

#include <QByteArrayList>
#include <QStringList>

#include <optional>

namespace tavrine {

class CurrentRows;
class HistoryFile;

/// The one deletion by age or count. Memory spares it nearly always: it knows that there is nothing to delete. Belongs
/// to the queue of the database.
class RowPruner {
public:
    struct Pruned {
        QStringList imageFileNames; ///< files that lost their row
        int deletedCount = 0;
        bool operator==(const Pruned &) const = default;
    };
    /// The oldest unprotected rows beyond the newest `keepNewest`, those before `before`, or both at once.
    struct Request {
        bool imagesOnly = false;
        std::optional<Date> before;
        std::optional<qint64> keepNewest;
    };

    RowPruner(HistoryFile &file, CurrentRows &current) : m_file(file), m_current(current) {}

    Pruned prune(const Request &request);

private:
    struct Selection {
        QByteArrayList ids;
        QStringList imageFileNames;
        bool isWhole = false; ///< it ran to its end
    };
    [[nodiscard]] Selection select(const Request &request);
    /// True when memory proves that no row with a file would be pruned.
    [[nodiscard]] bool isNothingToPrune(const Request &request);
    /// False when they stand still, as where another program holds the file: then they keep their files.
    [[nodiscard]] bool remove(const QByteArrayList &ids);
    void forgetRows(const QByteArrayList &ids);

    HistoryFile &m_file;
    CurrentRows &m_current;
    Seconds m_lookAhead{3600}; ///< how far beyond its cut-off a pruning looks for rows with a file
};

} // namespace tavrine
