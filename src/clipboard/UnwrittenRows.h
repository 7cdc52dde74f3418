#pragma once

#include "clipboard/ClipboardItem.h"

#include <QSet>
#include <QString>
#include <QStringList>
#include <QUuid>

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
            remove, ///< the row with the item's id
            clear   ///< every row that is not protected by then
        };
        Kind kind = Kind::save;
        ClipboardItem item; ///< of a removal, the id alone; of a clear, nothing
    };

    [[nodiscard]] bool isEmpty() const { return m_writes.empty(); }
    void add(Write write);
    [[nodiscard]] const Write &first() const { return m_writes.front(); }
    void removeFirst();
    /// New copies wait no longer, but for the protected ones. Answers the files that they named.
    [[nodiscard]] QStringList dropNewCopies();
    [[nodiscard]] bool holdsClear() const;
    /// True when a row that waits names this file.
    [[nodiscard]] bool hasFile(const QString &fileName) const;

    /// The last that waits to be saved with this content and file.
    [[nodiscard]] std::optional<ClipboardItem> find(const std::optional<QString> &imageFileName,
                                                    const QString &content) const;
    [[nodiscard]] std::optional<ClipboardItem> find(const QUuid &id) const;

    /// What it will all have come to when everything is written.
    struct Outcome {
        std::vector<ClipboardItem> rows; ///< that are there then, whole, in the order of their writing
        QSet<QUuid> ids;                 ///< rows of the file with one of these are not what they were
        QSet<QString> newTexts;          ///< an unprotected row with one of these has made way for a new copy
        bool isCleared = false;

        /// True when this row of the file stays as it is.
        [[nodiscard]] bool keeps(const ClipboardItem &ofFile) const;
        /// `items`, rows of the file in the order of the history, with all this done. Of the unprotected ones at most
        /// `limit`.
        [[nodiscard]] std::vector<ClipboardItem> appliedTo(std::vector<ClipboardItem> items, std::optional<Date> since,
                                                           qint64 limit) const;
    };
    [[nodiscard]] Outcome outcome() const;

private:
    std::deque<Write> m_writes;
    qsizetype m_size = 0;
};

} // namespace tavrine
