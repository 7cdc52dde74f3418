#pragma once

#include <QHash>
#include <QImage>
#include <QString>

#include <list>
#include <optional>

namespace tavrine {

/// Thumbnails by file name, bounded in number and in cost. When a bound would be passed, the entry that was not used
/// for the longest time goes first. Lives on the main thread, owned by the media store.
class ThumbnailCache {
public:
    static constexpr qsizetype countLimit = 60;
    static constexpr qint64 totalCostLimit = 67'108'864; ///< 64 MiB

    /// The thumbnail, which counts as a use of it.
    [[nodiscard]] std::optional<QImage> object(const QString &fileName);

    /// Replaces an older entry of that name. A thumbnail that alone costs more than the limit is not kept.
    void setObject(const QImage &thumbnail, const QString &fileName, qint64 cost);
    void removeObject(const QString &fileName);
    void removeAllObjects();

    [[nodiscard]] qsizetype count() const { return m_index.size(); }
    [[nodiscard]] qint64 totalCost() const { return m_totalCost; }

private:
    struct Entry {
        QString fileName;
        QImage thumbnail;
        qint64 cost = 0;
    };
    std::list<Entry> m_entries; // the last used one first
    QHash<QString, std::list<Entry>::iterator> m_index;
    qint64 m_totalCost = 0;
};

} // namespace tavrine
