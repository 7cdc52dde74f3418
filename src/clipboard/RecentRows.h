#pragma once

#include "clipboard/ClipboardItem.h"
#include "clipboard/CutText.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

namespace tavrine {

/// The rows that the history in memory is made of, kept beside the file: all protected ones and the newest others.
///
/// Why: the statement that loads them sorts every unprotected row (SQLite's planner takes the index on `is_saved` for
/// it): 85 ms at 100,000 rows, after each copy. Owned by `ClipboardDatabase`, which tells it of every change that
/// reached the file, and used on the database's queue only. It knows nothing of SQL or of the file.
///
/// It is cold, and then knows nothing, or warm, and then:
///
///  1. It holds every protected row of the table, and of the others exactly those with a date after the floor; without
///     a floor, all of them.
///  2. An item in it is what reading its row gives: content up to the first NUL, "Image" for an empty caption.
///  3. No two unprotected rows in it have the same date, nor any two protected rows of the same flags: the order of
///     equal dates is SQLite's to choose. An unprotected pair raises the floor to its date, a protected pair makes it
///     cold.
///  4. Every row in it reads the same each time, and is reached by its item's id: the id is a UUID in the form that is
///     written here, its content is a text, both flags are 0 or 1, the date is a number. Rows that other programs wrote
///     otherwise are left below the floor, or keep it cold when they are protected or their date has no place there.
///  5. No unprotected row with a file is older than the media floor, if there is one.
///  6. An answer that it gives is the one that the statement would give, save that a search may find of a protected row
///     a longer beginning in the file. What it cannot prove it declines.
///  7. The texts of the protected rows are as short as their number wants it (see `CutText.h`).
///  8. Unprotected rows that nobody asked for are dropped, the oldest first, beyond `maximumRows` rows or beyond
///     `maximumTextLength` characters.
class RecentRows {
public:
    /// Enough that a search for what every third row has is answered here.
    static constexpr std::size_t maximumRows = 1500;
    /// Beyond it only the rows that were asked for last stay, which share their text with the history in memory.
    static constexpr qsizetype maximumTextLength = 1'000'000;

    struct Row {
        ClipboardItem item;
        bool isOrdinary = true;   ///< as rule 4 wants it
        bool isReachable = true;  ///< by its item's id
        bool hasPlainDate = true; ///< its date is a number: other dates rank above all numbers
    };

    void forget() { *this = RecentRows(); }
    [[nodiscard]] bool isWarm() const { return m_isWarm; }

    /// Takes over what the statement gave, in its order: every protected row, then unprotected ones, newest first.
    /// `isCut`: there may be further rows, older than the last. `since`: rows up to this date were not asked for.
    /// `limit`: how many unprotected rows the caller wanted.
    void fill(const std::vector<Row> &rows, std::optional<Date> since, bool isCut, qint64 limit);

    /// Every protected row, then at most `limit` of the unprotected rows after `since`.
    [[nodiscard]] std::optional<std::vector<ClipboardItem>> answer(std::optional<Date> since, qint64 limit);
    [[nodiscard]] std::size_t protectedCount() const { return m_protected.size(); }

    struct Found {
        std::optional<std::vector<ClipboardItem>> items; ///< in the statement's order; absent when rows may be missing
        std::optional<double> share;                     ///< of the rows here that match; absent when there are none
    };
    /// At most `limit` of the rows that match. The test says nothing where it cannot be sure of a row, which declines.
    [[nodiscard]] Found search(const std::function<std::optional<bool>(const ClipboardItem &)> &matches,
                               qint64 limit) const;

    /// True when it is certain that no unprotected row with a file is older than `before`, or that there are no more
    /// than `keepNewest` of them (either may be absent), where `mediaCount` rows of the table have a file.
    [[nodiscard]] bool isNothingToPrune(qint64 mediaCount, std::optional<Date> before,
                                        std::optional<qint64> keepNewest) const;

    // What has happened to the table.
    void saved(const ClipboardItem &asItReadsBack);
    void removed(const QUuid &id);
    void clearedUnprotected();
    /// It was found that no unprotected row with a file is older than `date`.
    void foundNoMediaBefore(Date date);

private:
    [[nodiscard]] bool isAboveFloor(Date date) const { return !m_floor || date > *m_floor; }
    void raiseFloor(Date date);
    void insertProtected(const ClipboardItem &item);
    void takeOut(const QUuid &id);
    void shortenProtected();
    void insertUnprotected(const ClipboardItem &item);
    void trim();

    bool m_isWarm = false;
    std::vector<ClipboardItem> m_protected;            ///< in the statement's order
    std::deque<ClipboardItem> m_unprotected;           ///< newest first
    std::size_t m_longestProtected = longestWholeText; ///< as far as their texts are whole
    std::optional<Date> m_floor;
    std::optional<Date> m_mediaFloor;
    qsizetype m_textLength = 0; ///< of the unprotected rows
    std::size_t m_askedFor = 0; ///< unprotected rows of the last answer
};

} // namespace tavrine
