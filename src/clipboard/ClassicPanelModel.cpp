#include "clipboard/ClassicPanelModel.h"

#include "base/CaseInsensitiveText.h"
#include "base/VirtualKeys.h"
#include "clipboard/ClipboardManager.h"
#include "clipboard/ClipboardRowActions.h"

#include <algorithm>

namespace tavrine {

ClassicPanelModel::ClassicPanelModel(ClipboardManager &manager, NotificationCenter &center,
                                     std::function<void()> orderOutAllWindows, QObject *parent)
    : QObject(parent), m_manager(manager), m_center(center), m_orderOutAllWindows(std::move(orderOutAllWindows)) {
    connect(&manager, &ClipboardManager::historyChanged, this, &ClassicPanelModel::rebuildShownItems);
    m_openedToken = center.addObserver(QLatin1String(openedNotification), [this](const Notification &) { open(); });
    rebuildShownItems();
}

void ClassicPanelModel::open() {
    setSearchText(QString());
    m_isPanelOpen = true;
    Q_EMIT isPanelOpenChanged();
    selectFirst();
}

void ClassicPanelModel::close() {
    m_isPanelOpen = false;
    Q_EMIT isPanelOpenChanged();
}

void ClassicPanelModel::setSearchText(const QString &text) {
    if (text == m_searchText)
        return;
    m_searchText = text;
    Q_EMIT searchTextChanged();
    rebuildShownItems();
}

void ClassicPanelModel::rebuildShownItems() {
    const CaseInsensitiveText wanted(m_searchText);
    m_shownItems.clear();
    std::ranges::copy_if(m_manager.history(), std::back_inserter(m_shownItems),
                         [&](const ClipboardItem &item) { return wanted.isIn(item.content); });
    Q_EMIT shownItemsChanged();
}

ClassicPanelModel::EmptyState ClassicPanelModel::emptyState() const {
    if (m_searchText.isEmpty())
        return {QStringLiteral("History is empty"), QStringLiteral("clipboard")};
    return {QStringLiteral("No results found"), QStringLiteral("magnifyingglass")};
}

ClassicPanelRow ClassicPanelModel::row(const ClipboardItem &item) {
    ClassicPanelRow row;
    row.title = item.content;
    if (item.imageFileName) {
        row.showsPlayBadge = isRecordingFileName(*item.imageFileName);
        row.title = row.showsPlayBadge ? QStringLiteral("Screen Recording") : QStringLiteral("Image");
        row.fallbackSymbol = row.showsPlayBadge ? QStringLiteral("video") : QStringLiteral("photo");
    }
    if (item.isPinned)
        row.labels.append({QStringLiteral("Pinned"), QStringLiteral("pin.fill")});
    if (item.isSaved)
        row.labels.append({QStringLiteral("My Saved"), QStringLiteral("bookmark.fill")});
    row.pinToolTip = item.isPinned ? QStringLiteral("Remove pin") : QStringLiteral("Pin snippet");
    row.savedToolTip = item.isSaved ? QStringLiteral("Remove from My Saved") : QStringLiteral("Add to My Saved");
    return row;
}

void ClassicPanelModel::select(const std::optional<QUuid> &id) {
    if (id == m_selectedItemID)
        return;
    m_selectedItemID = id;
    Q_EMIT selectedItemIDChanged();
}

void ClassicPanelModel::selectFirst() {
    select(m_shownItems.empty() ? std::nullopt : std::optional(m_shownItems.front().id));
}

const ClipboardItem *ClassicPanelModel::shownItem(const std::optional<QUuid> &id) const {
    if (!id)
        return nullptr;
    const auto found = std::ranges::find(m_shownItems, *id, &ClipboardItem::id);
    return found == m_shownItems.end() ? nullptr : &*found;
}

void ClassicPanelModel::moveSelection(int delta) {
    if (m_shownItems.empty())
        return;
    const ClipboardItem *selected = shownItem(m_selectedItemID);
    if (!selected)
        return selectFirst();
    const qsizetype last = static_cast<qsizetype>(m_shownItems.size()) - 1;
    const qsizetype index = std::clamp<qsizetype>(selected - m_shownItems.data() + delta, 0, last);
    select(m_shownItems[static_cast<size_t>(index)].id);
}

void ClassicPanelModel::useSelected() {
    if (m_selectedItemID)
        use(QUuid(*m_selectedItemID));
}

void ClassicPanelModel::use(const QUuid &id) {
    const ClipboardItem *shown = shownItem(id);
    if (!shown)
        return;
    const ClipboardItem item = *shown; // the list may change while it is used
    if (m_onPaste)
        return m_onPaste(item);
    m_manager.copyToPasteboard(item);
    m_orderOutAllWindows();
}

void ClassicPanelModel::togglePin(const QUuid &id) {
    if (const ClipboardItem *item = shownItem(id))
        clipboardRow::togglePin(m_manager, *item);
}

void ClassicPanelModel::toggleSaved(const QUuid &id) {
    if (const ClipboardItem *item = shownItem(id))
        clipboardRow::toggleSaved(m_manager, *item);
}

void ClassicPanelModel::requestSettings() {
    m_center.post(QLatin1String(settingsNotification));
}

std::optional<ClassicPanelKeyAction> ClassicPanelModel::keyAction(int keyCode) {
    switch (keyCode) {
    case virtualKey::enter:
    case virtualKey::keypadEnter:
        return ClassicPanelKeyAction::useItem;
    case virtualKey::down:
        return ClassicPanelKeyAction::moveDown;
    case virtualKey::up:
        return ClassicPanelKeyAction::moveUp;
    default:
        return std::nullopt;
    }
}

bool ClassicPanelModel::handleKeyDown(const QString &keyWindowTitle, int keyCode) {
    if (!m_isPanelOpen || keyWindowTitle != QLatin1String(windowTitle))
        return false;
    const auto action = keyAction(keyCode);
    if (!action)
        return false;
    switch (*action) {
    case ClassicPanelKeyAction::useItem:
        useSelected();
        break;
    case ClassicPanelKeyAction::moveDown:
        moveSelection(+1);
        break;
    case ClassicPanelKeyAction::moveUp:
        moveSelection(-1);
        break;
    }
    return true;
}

} // namespace tavrine
