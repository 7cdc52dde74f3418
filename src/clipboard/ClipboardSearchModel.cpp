#include "clipboard/ClipboardSearchModel.h"

#include "base/CaseInsensitiveText.h"
#include "base/Time.h"
#include "clipboard/ClipboardManager.h"
#include "clipboard/ClipboardRowActions.h"
#include "clipboard/HistoryRead.h"
#include "clipboard/LinkRule.h"
#include "ports/Alerts.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tavrine {

ClipboardSearchModel::ClipboardSearchModel(Ports ports, QObject *parent)
    : ClipboardListModel(ports.manager, parent), m_ports(ports) {
    connect(&ports.manager, &ClipboardManager::historyChanged, this, &ClipboardSearchModel::historyChanged);
    m_openedToken =
        ports.center.addObserver(QLatin1String(openedNotification), [this](const Notification &) { open(); });
    reload(Selection::reset);
}

void ClipboardSearchModel::open() {
    m_waitingActions.clear();
    m_query.clear();
    m_selectedCategory = ClipboardSearchCategory::all;
    Q_EMIT queryChanged();
    Q_EMIT selectedCategoryChanged();
    reload(Selection::reset);
    m_ports.time.async(this, [this] { Q_EMIT searchFieldFocusWanted(); });
}

bool ClipboardSearchModel::hasQuery() const {
    return std::ranges::any_of(m_query, [](QChar c) { return !c.isSpace(); });
}

void ClipboardSearchModel::setQuery(const QString &query) {
    if (query == m_query)
        return;
    m_query = query;
    Q_EMIT queryChanged();
    reload(Selection::reset);
}

void ClipboardSearchModel::setSelectedCategory(ClipboardSearchCategory category) {
    if (category == m_selectedCategory)
        return;
    m_selectedCategory = category;
    Q_EMIT selectedCategoryChanged();
    rebuildVisibleItems();
    selectFirst();
}

void ClipboardSearchModel::historyChanged() {
    reload(Selection::keep);
}

void ClipboardSearchModel::reload(Selection selection) {
    // A search that is still awaited wanted the selection for its query, and this one is for the same or a newer one.
    const bool isReset = selection == Selection::reset || (m_search && m_selectionAfterwards == Selection::reset);
    m_selectionAfterwards = isReset ? Selection::reset : Selection::keep;
    endSearch();
    if (m_query.isEmpty())
        return takeIn(m_ports.manager.searchItems(m_query));
    m_search = m_ports.manager.beginSearch(m_query, this, [this, number = ++m_searchNumber] {
        if (number == m_searchNumber)
            searchArrived();
    });
    if (m_ports.searchPatience.count() < 0)
        return;
    if (auto items = m_search->take(m_ports.searchPatience))
        takeIn(*std::move(items));
}

void ClipboardSearchModel::endSearch() {
    if (m_search)
        m_search->drop();
    m_search.reset();
}

void ClipboardSearchModel::searchArrived() {
    if (!m_search)
        return; // it was in time
    if (auto items = m_search->take())
        takeIn(*std::move(items));
}

void ClipboardSearchModel::takeIn(std::vector<ClipboardItem> items) {
    m_search.reset();
    m_diskItems = std::move(items);
    m_links.clear();
    rebuildVisibleItems();
    if (m_selectionAfterwards == Selection::reset || !visibleItem(selectedID()))
        selectFirst();
    for (const ClipboardSearchKeyAction action : std::exchange(m_waitingActions, {}))
        perform(action);
}

bool ClipboardSearchModel::isLinkCached(const ClipboardItem &item) const {
    const auto known = m_links.constFind(item.id);
    return known != m_links.constEnd() ? *known : *m_links.insert(item.id, isLink(item));
}

bool ClipboardSearchModel::belongs(const ClipboardItem &item) const {
    switch (m_selectedCategory) {
    case ClipboardSearchCategory::all:
        return !item.isSaved || hasQuery();
    case ClipboardSearchCategory::mySave:
        return item.isSaved;
    case ClipboardSearchCategory::text:
        return !item.isSaved && !item.imageFileName && !isLinkCached(item);
    case ClipboardSearchCategory::images:
        return !item.isSaved && item.imageFileName;
    case ClipboardSearchCategory::links:
        return !item.isSaved && isLinkCached(item);
    case ClipboardSearchCategory::snippets:
        return !item.isSaved && item.isPinned;
    }
    return false;
}

void ClipboardSearchModel::rebuildVisibleItems() {
    // The text filter takes the query as it stands, blanks included.
    const CaseInsensitiveText wanted(m_query);
    std::array<std::vector<const ClipboardItem *>, 3> parts; // saved, pinned, rest
    for (const ClipboardItem &item : m_diskItems) {
        // Of a text that is cut the search has seen the whole, unless its answer is awaited still.
        if (belongs(item) && ((item.cut && !isSearching()) || wanted.isIn(item.content)))
            parts.at(item.isSaved ? 0 : item.isPinned ? 1 : 2).push_back(&item);
    }
    // Without a query a saved item shows in My Saved alone, so that part is empty elsewhere by itself.
    static const std::array headers{QStringLiteral("My Saved"), QStringLiteral("Pinned Snippets"),
                                    QStringLiteral("Recent Clipboard")};
    std::vector<ClipboardItem> visible;
    m_sections.clear();
    for (size_t part = 0; part < parts.size(); ++part) {
        if (parts.at(part).empty())
            continue;
        m_sections.push_back({headers.at(part), visible.size(), parts.at(part).size()});
        for (const ClipboardItem *item : parts.at(part))
            visible.push_back(*item);
    }
    setVisibleItems(std::move(visible));
}

ClipboardSearchModel::EmptyState ClipboardSearchModel::emptyState() const {
    if (m_query.isEmpty())
        return {QStringLiteral("Your clipboard is empty"), QStringLiteral("clipboard")};
    return {QStringLiteral("No clipboard items found"), QStringLiteral("magnifyingglass")};
}

ClipboardSearchRow ClipboardSearchModel::row(const ClipboardItem &item) const {
    return clipboardSearchRow(item, isLinkCached(item), QLocale(), QTimeZone::systemTimeZone());
}

void ClipboardSearchModel::moveCategory(int delta) {
    setSelectedCategory(movedCategory(m_selectedCategory, delta));
}

void ClipboardSearchModel::pasteSelected() {
    if (selectedID())
        use(QUuid(*selectedID()));
}

void ClipboardSearchModel::use(const QUuid &id) {
    const ClipboardItem *item = visibleItem(id);
    if (item && m_onPaste)
        m_onPaste(ClipboardItem(*item)); // a copy: the list may change while it is pasted
}

void ClipboardSearchModel::togglePinOfSelected() {
    if (const ClipboardItem *item = visibleItem(selectedID()))
        clipboardRow::togglePin(m_ports.manager, *item);
}

void ClipboardSearchModel::deleteSelected() {
    if (const ClipboardItem *item = visibleItem(selectedID()))
        clipboardRow::remove(m_ports.manager, *item);
}

void ClipboardSearchModel::togglePin(const QUuid &id) {
    if (!visibleItem(id))
        return;
    select(id);
    togglePinOfSelected();
}

void ClipboardSearchModel::toggleSaved(const QUuid &id) {
    const ClipboardItem *item = visibleItem(id);
    if (!item)
        return;
    select(id);
    clipboardRow::toggleSaved(m_ports.manager, *item);
}

void ClipboardSearchModel::deleteItem(const QUuid &id) {
    if (!visibleItem(id))
        return;
    select(id);
    deleteSelected();
}

void ClipboardSearchModel::addToMySaved() {
    const Alert alert{QStringLiteral("Add to My Saved"),
                      QStringLiteral("Create a custom clipboard item you use often."),
                      {QStringLiteral("Save"), QStringLiteral("Cancel")}};
    const auto text = m_ports.alerts.runModalForText(alert, savedTextWidth, savedTextHeight);
    if (!text)
        return;
    m_ports.manager.addToMySaved(*text);
    if (m_selectedCategory != ClipboardSearchCategory::mySave) {
        m_selectedCategory = ClipboardSearchCategory::mySave;
        Q_EMIT selectedCategoryChanged();
    }
    reload(Selection::reset);
}

} // namespace tavrine
