#include "clipboard/UnwrittenRows.h"

#include "clipboard/CutText.h"

#include <algorithm>
#include <tuple>

namespace tavrine {
namespace {

qsizetype sizeOf(const UnwrittenRows::Write &write) {
    return static_cast<qsizetype>(sizeof write) + write.item.content.size() * static_cast<qsizetype>(sizeof(QChar));
}

bool isRemoval(const UnwrittenRows::Write &write) {
    return write.kind == UnwrittenRows::Write::Kind::remove;
}

auto precedence(const ClipboardItem &item) {
    return std::tuple(item.isSaved, item.isPinned, item.date);
}

} // namespace

void UnwrittenRows::add(Write write) {
    // A row that was never written needs no removal, and no second writing.
    const auto older = std::find_if(m_writes.begin(), m_writes.end(), [&](const Write &each) {
        return !isRemoval(each) && each.item.id == write.item.id;
    });
    if (older != m_writes.end()) {
        const bool wasNew = older->kind == Write::Kind::record;
        m_size -= sizeOf(*older);
        if (wasNew && isRemoval(write)) {
            m_writes.erase(older);
            return;
        }
        if (wasNew && !isRemoval(write)) {
            older->item = std::move(write.item);
            m_size += sizeOf(*older);
            return;
        }
        m_writes.erase(older);
    }
    if (m_size + sizeOf(write) > longestInAll)
        return;
    m_size += sizeOf(write);
    m_writes.push_back(std::move(write));
}

void UnwrittenRows::removeFirst() {
    m_size -= sizeOf(m_writes.front());
    m_writes.pop_front();
}

void UnwrittenRows::clearUnprotected() {
    std::erase_if(m_writes, [](const Write &each) { return !isRemoval(each) && !each.item.isProtected(); });
    m_size = 0;
    for (const Write &each : m_writes)
        m_size += sizeOf(each);
}

std::optional<ClipboardItem> UnwrittenRows::find(const std::optional<QString> &imageFileName,
                                                 const QString &content) const {
    const auto last = std::find_if(m_writes.rbegin(), m_writes.rend(), [&](const Write &each) {
        return !isRemoval(each) && each.item.imageFileName == imageFileName && each.item.content == content;
    });
    return last == m_writes.rend() ? std::nullopt : std::optional(last->item);
}

std::optional<ClipboardItem> UnwrittenRows::find(const QUuid &id) const {
    const auto last = std::find_if(m_writes.rbegin(), m_writes.rend(),
                                   [&](const Write &each) { return !isRemoval(each) && each.item.id == id; });
    return last == m_writes.rend() ? std::nullopt : std::optional(last->item);
}

std::vector<ClipboardItem> UnwrittenRows::appliedTo(std::vector<ClipboardItem> items, std::optional<Date> since,
                                                    qint64 limit) const {
    for (const Write &write : m_writes) {
        std::erase_if(items, [&](const ClipboardItem &item) {
            const bool isSameText = write.kind == Write::Kind::record && !item.isProtected() && !item.cut &&
                                    !item.imageFileName && !write.item.imageFileName &&
                                    item.content == write.item.content;
            return item.id == write.item.id || isSameText;
        });
        const bool isWanted = write.item.isProtected() || !since || write.item.date > *since;
        if (isRemoval(write) || !isWanted)
            continue;
        const ClipboardItem shown = shortened(write.item);
        const auto place = std::lower_bound(items.begin(), items.end(), shown,
                                            [](const auto &a, const auto &b) { return precedence(a) > precedence(b); });
        items.insert(place, shown);
    }
    const auto others =
        std::find_if(items.begin(), items.end(), [](const ClipboardItem &item) { return !item.isProtected(); });
    if (limit >= 0 && items.end() - others > limit)
        items.erase(others + static_cast<std::ptrdiff_t>(limit), items.end());
    return items;
}

} // namespace tavrine
