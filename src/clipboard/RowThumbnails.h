#pragma once

#include "clipboard/ClipboardItem.h"

#include <QCache>
#include <QPixmap>
#include <QSet>

namespace tavrine {

class ClipboardManager;

/// The thumbnails of a list at the size in which its rows show them, so that a repaint scales nothing. Made for a row
/// when it is painted for the first time. Belongs to a view; lives on the main thread.
class RowThumbnails {
public:
    explicit RowThumbnails(ClipboardManager &manager) : m_manager(manager) {}

    /// Large enough to fill a square of `side` points. Null for an item without a file, and when the file is gone or
    /// unreadable, which is found out once until `retry`.
    [[nodiscard]] QPixmap thumbnail(const ClipboardItem &item, qreal side, qreal scale);
    void retry() { m_missing.clear(); }
    /// There is one now.
    void retry(const QString &fileName) { m_missing.remove(fileName); }

private:
    static constexpr qsizetype countLimit = 60; ///< as many as the large ones that are kept

    ClipboardManager &m_manager;
    QCache<qint64, QPixmap> m_scaled{countLimit}; ///< by the large one's identity
    QSet<QString> m_missing;
};

} // namespace tavrine
