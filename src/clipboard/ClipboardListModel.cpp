#include "clipboard/ClipboardListModel.h"

#include "clipboard/ClipboardRowActions.h"

#include <algorithm>

namespace tavrine {

ClipboardListModel::ClipboardListModel(ClipboardManager &manager, QObject *parent)
    : QObject(parent), m_manager(manager) {}

void ClipboardListModel::setVisibleItems(std::vector<ClipboardItem> items) {
    m_visibleItems = std::move(items);
    Q_EMIT visibleItemsChanged();
}

void ClipboardListModel::select(const std::optional<QUuid> &id) {
    if (id == m_selectedID)
        return;
    m_selectedID = id;
    Q_EMIT selectedIDChanged();
}

void ClipboardListModel::selectFirst() {
    select(m_visibleItems.empty() ? std::nullopt : std::optional(m_visibleItems.front().id));
}

const ClipboardItem *ClipboardListModel::visibleItem(const std::optional<QUuid> &id) const {
    if (!id)
        return nullptr;
    const auto found = std::ranges::find(m_visibleItems, *id, &ClipboardItem::id);
    return found == m_visibleItems.end() ? nullptr : &*found;
}

std::optional<size_t> ClipboardListModel::selectedIndex() const {
    const ClipboardItem *selected = visibleItem(m_selectedID);
    return selected ? std::optional(static_cast<size_t>(selected - m_visibleItems.data())) : std::nullopt;
}

void ClipboardListModel::moveSelection(int delta) {
    if (m_visibleItems.empty())
        return;
    const auto selected = selectedIndex();
    if (!selected)
        return selectFirst();
    const qsizetype last = static_cast<qsizetype>(m_visibleItems.size()) - 1;
    const qsizetype index = std::clamp<qsizetype>(static_cast<qsizetype>(*selected) + delta, 0, last);
    select(m_visibleItems[static_cast<size_t>(index)].id);
}

void ClipboardListModel::togglePin(const QUuid &id) {
    if (const ClipboardItem *item = visibleItem(id))
        clipboardRow::togglePin(m_manager, *item);
}

void ClipboardListModel::toggleSaved(const QUuid &id) {
    if (const ClipboardItem *item = visibleItem(id))
        clipboardRow::toggleSaved(m_manager, *item);
}

} // namespace tavrine
