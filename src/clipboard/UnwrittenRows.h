#pragma once

#include "clipboard/ClipboardItem.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <vector>

namespace tavrine {

/// What was to be written while the file could not be, in order: another program held it, or its disk was full. It is
/// written when that is over, and shown until then. Belongs to the queue of the database. In memory alone: what the
/// program ends with before is lost.
class UnwrittenRows {
public:
    /// What is kept at most, in bytes of memory. A write beyond it is lost, as all of them were without this.
    static constexpr qsizetype longestInAll = 64 << 20;

    struct Write {
        enum class Kind {
            save,   ///< the row, over the one with its id
            record, ///< a new copy, by the rule of duplicates: nobody could look for them when it was made
            remove  ///< the row with the item's id
        };
        Kind kind = Kind::save;
        ClipboardItem item; ///< of a removal, the id alone
    };

    [[nodiscard]] bool isEmpty() const { return m_writes.empty(); }
    void add(Write write);
    [[nodiscard]] const Write &first() const { return m_writes.front(); }
    void removeFirst();
    /// Nothing unprotected waits any longer.
    void clearUnprotected();

    /// The last that waits to be saved with this content and file.
    [[nodiscard]] std::optional<ClipboardItem> find(const std::optional<QString> &imageFileName,
                                                    const QString &content) const;
    [[nodiscard]] std::optional<ClipboardItem> find(const QUuid &id) const;
    /// `items`, which are in the order of the history, as they will be when everything is written. Of the unprotected
    /// ones at most `limit`.
    [[nodiscard]] std::vector<ClipboardItem> appliedTo(std::vector<ClipboardItem> items, std::optional<Date> since,
                                                       qint64 limit) const;

private:
    std::deque<Write> m_writes;
    qsizetype m_size = 0;
};

} // namespace tavrine
