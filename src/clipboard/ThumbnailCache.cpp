#include "clipboard/ThumbnailCache.h"

namespace tavrine {

std::optional<QImage> ThumbnailCache::object(const QString &fileName) {
    const auto found = m_index.constFind(fileName);
    if (found == m_index.constEnd())
        return std::nullopt;
    m_entries.splice(m_entries.begin(), m_entries, *found);
    return m_entries.front().thumbnail;
}

void ThumbnailCache::setObject(const QImage &thumbnail, const QString &fileName, qint64 cost) {
    removeObject(fileName);
    if (cost > totalCostLimit)
        return;
    m_entries.push_front({fileName, thumbnail, cost});
    m_index.insert(fileName, m_entries.begin());
    m_totalCost += cost;
    while (count() > countLimit || m_totalCost > totalCostLimit)
        removeObject(QString(m_entries.back().fileName)); // a copy: the entry goes while its name is in use
}

void ThumbnailCache::removeObject(const QString &fileName) {
    const auto found = m_index.constFind(fileName);
    if (found == m_index.constEnd())
        return;
    m_totalCost -= (*found)->cost;
    m_entries.erase(*found);
    m_index.erase(found);
}

void ThumbnailCache::removeAllObjects() {
    m_entries.clear();
    m_index.clear();
    m_totalCost = 0;
}

} // namespace tavrine
