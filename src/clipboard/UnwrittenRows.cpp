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

bool isClear(const UnwrittenRows::Write &write) {
    return write.kind == UnwrittenRows::Write::Kind::clear;
}

bool hasRow(const UnwrittenRows::Write &write) {
    return !isRemoval(write) && !isClear(write);
}

auto precedence(const ClipboardItem &item) {
    return std::tuple(item.isSaved, item.isPinned, item.date);
}

} // namespace

void UnwrittenRows::add(Write write) {
    // A row that was never written needs no removal, and no second writing. What a clear is to meet stays before it.
    const auto behindClear = std::find_if(m_writes.rbegin(), m_writes.rend(), isClear).base();
    const auto older = std::find_if(behindClear, m_writes.end(), [&](const Write &each) {
        return hasRow(each) && !isClear(write) && each.item.id == write.item.id;
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
    if (m_size + sizeOf(write) > longestInAll && !isClear(write))
        return;
    m_size += sizeOf(write);
    m_writes.push_back(std::move(write));
}

void UnwrittenRows::removeFirst() {
    m_size -= sizeOf(m_writes.front());
    m_writes.pop_front();
}

QStringList UnwrittenRows::dropNewCopies() {
    QStringList fileNames;
    std::erase_if(m_writes, [&](const Write &each) {
        const bool isDropped = each.kind == Write::Kind::record && !each.item.isProtected();
        if (isDropped && each.item.imageFileName)
            fileNames.append(*each.item.imageFileName);
        m_size -= isDropped ? sizeOf(each) : 0;
        return isDropped;
    });
    return fileNames;
}

bool UnwrittenRows::holdsClear() const {
    return std::any_of(m_writes.begin(), m_writes.end(), isClear);
}

bool UnwrittenRows::hasFile(const QString &fileName) const {
    return std::any_of(m_writes.begin(), m_writes.end(),
                       [&](const Write &each) { return hasRow(each) && each.item.imageFileName == fileName; });
}

std::optional<ClipboardItem> UnwrittenRows::find(const std::optional<QString> &imageFileName,
                                                 const QString &content) const {
    bool isCleared = false;
    for (auto each = m_writes.rbegin(); each != m_writes.rend(); ++each) {
        isCleared = isCleared || isClear(*each);
        const ClipboardItem &item = each->item;
        if (hasRow(*each) && item.imageFileName == imageFileName && item.content == content &&
            (item.isProtected() || !isCleared))
            return item;
    }
    return std::nullopt;
}

std::optional<ClipboardItem> UnwrittenRows::find(const QUuid &id) const {
    const auto last = std::find_if(m_writes.rbegin(), m_writes.rend(),
                                   [&](const Write &each) { return hasRow(each) && each.item.id == id; });
    return last == m_writes.rend() ? std::nullopt : std::optional(last->item);
}

UnwrittenRows::Outcome UnwrittenRows::outcome() const {
    Outcome outcome;
    for (const Write &write : m_writes) {
        const ClipboardItem &item = write.item;
        const bool isNewText = write.kind == Write::Kind::record && !item.imageFileName;
        std::erase_if(outcome.rows, [&](const ClipboardItem &row) {
            if (isClear(write))
                return !row.isProtected();
            const bool givesWay = isNewText && !row.isProtected() && !row.imageFileName && row.content == item.content;
            return row.id == item.id || givesWay;
        });
        outcome.isCleared = outcome.isCleared || isClear(write);
        if (isClear(write))
            continue;
        outcome.ids.insert(item.id);
        if (isNewText)
            outcome.newTexts.insert(item.content);
        if (hasRow(write))
            outcome.rows.push_back(item);
    }
    return outcome;
}

bool UnwrittenRows::Outcome::keeps(const ClipboardItem &ofFile) const {
    if (ids.contains(ofFile.id))
        return false;
    const bool givesWay = !ofFile.cut && !ofFile.imageFileName && newTexts.contains(ofFile.content);
    return ofFile.isProtected() || !(isCleared || givesWay);
}

std::vector<ClipboardItem> UnwrittenRows::Outcome::appliedTo(std::vector<ClipboardItem> items,
                                                             std::optional<Date> since, qint64 limit) const {
    std::erase_if(items, [&](const ClipboardItem &item) { return !keeps(item); });
    for (const ClipboardItem &row : rows) {
        if (!row.isProtected() && since && row.date <= *since)
            continue;
        const ClipboardItem shown = shortened(row);
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
