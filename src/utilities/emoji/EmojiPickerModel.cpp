#include "utilities/emoji/EmojiPickerModel.h"

#include "base/DesktopWords.h"
#include "base/KeyTable.h"
#include "base/Time.h"
#include "base/VirtualKeys.h"

#include <algorithm>

namespace tavrine {
namespace {

constexpr auto keys = [] {
    using enum EmojiPickerKeyAction;
    return std::to_array<KeyRow<EmojiPickerKeyAction>>({
        {virtualKey::p, Command::isHeld, togglePin},
        {virtualKey::left, Command::isHeld, previousCategory},
        {virtualKey::right, Command::isHeld, nextCategory},
        {virtualKey::enter, Command::isUp, copy},
        {virtualKey::keypadEnter, Command::isUp, copy},
        {virtualKey::escape, Command::isUp, dismiss},
        {virtualKey::left, Command::isUp, moveLeft},
        {virtualKey::right, Command::isUp, moveRight},
        {virtualKey::down, Command::isUp, moveDown},
        {virtualKey::up, Command::isUp, moveUp},
    });
}();

} // namespace

EmojiPickerModel::EmojiPickerModel(Ports ports, QObject *parent)
    : QObject(parent), m_store(ports.store), m_time(ports.time) {
    connect(&m_store, &EmojiPickerStore::recentEmojisChanged, this, &EmojiPickerModel::keepSelection);
    connect(&m_store, &EmojiPickerStore::pinnedEmojisChanged, this, &EmojiPickerModel::keepSelection);
    m_openedToken =
        ports.center.addObserver(QLatin1String(openedNotification), [this](const Notification &) { open(); });
    rebuildSections();
    selectFirst();
}

void EmojiPickerModel::open() {
    m_query.clear();
    m_selectedCategory = EmojiCategory::all;
    Q_EMIT queryChanged();
    Q_EMIT selectedCategoryChanged();
    rebuildSections();
    selectFirst();
    m_time.async(this, [this] { Q_EMIT searchFieldFocusWanted(); });
}

bool EmojiPickerModel::hasQuery() const {
    return !m_query.trimmed().isEmpty();
}

void EmojiPickerModel::setQuery(const QString &query) {
    if (query == m_query)
        return;
    m_query = query;
    Q_EMIT queryChanged();
    rebuildSections();
    selectFirst();
}

void EmojiPickerModel::setSelectedCategory(EmojiCategory category) {
    if (category == m_selectedCategory)
        return;
    m_selectedCategory = category;
    Q_EMIT selectedCategoryChanged();
    rebuildSections();
    selectFirst();
}

void EmojiPickerModel::setSelectedID(const std::optional<QString> &emoji) {
    if (emoji == m_selectedID)
        return;
    m_selectedID = emoji;
    Q_EMIT selectedIDChanged();
}

void EmojiPickerModel::keepSelection() {
    rebuildSections();
    if (!m_selectedID || !emojiGrid::find(m_sections, *m_selectedID))
        selectFirst();
}

std::vector<const EmojiItem *> EmojiPickerModel::itemsOf(const QStringList &emojis) const {
    std::vector<const EmojiItem *> items;
    for (const QString &emoji : emojis) {
        if (const EmojiItem *item = m_store.item(emoji))
            items.push_back(item);
    }
    return items;
}

void EmojiPickerModel::rebuildSections() {
    const EmojiSearch &search = m_store.search();
    m_sections.clear();
    const auto addUnlessEmpty = [this](const QString &title, std::vector<const EmojiItem *> items) {
        if (!items.empty())
            m_sections.push_back({title, std::move(items)});
    };
    if (hasQuery()) {
        m_sections.push_back({QStringLiteral("Results"), search.search(m_query, m_selectedCategory)});
    } else if (m_selectedCategory == EmojiCategory::all) {
        addUnlessEmpty(QStringLiteral("Pinned"), itemsOf(m_store.pinnedEmojis()));
        addUnlessEmpty(QStringLiteral("Frequently Used"), itemsOf(m_store.recentEmojis()));
        for (const EmojiCategoryRow &row : emojiCategories) {
            if (row.category != EmojiCategory::all)
                addUnlessEmpty(row.longName, search.categoryList(row.category));
        }
    } else {
        m_sections.push_back({longName(m_selectedCategory), search.categoryList(m_selectedCategory)});
    }
    Q_EMIT sectionsChanged();
}

bool EmojiPickerModel::isEmpty() const {
    return std::ranges::all_of(m_sections, [](const EmojiSection &section) { return section.items.empty(); });
}

void EmojiPickerModel::move(EmojiMove move) {
    setSelectedID(emojiGrid::moved(m_sections, m_selectedID, move));
}

void EmojiPickerModel::moveCategory(int delta) {
    setSelectedCategory(movedCategory(m_selectedCategory, delta));
}

void EmojiPickerModel::choose(const QString &emoji) {
    const EmojiItem *item = m_store.item(emoji);
    if (!item)
        return;
    m_store.recordRecent(*item);
    if (m_onCopy)
        m_onCopy(*item);
}

void EmojiPickerModel::chooseSelected() {
    if (m_selectedID)
        choose(QString(*m_selectedID)); // a copy: recording it may move the selection
}

void EmojiPickerModel::togglePinOfSelected() {
    const EmojiItem *item = m_selectedID ? m_store.item(*m_selectedID) : nullptr;
    if (item)
        m_store.togglePin(*item);
}

std::optional<EmojiPickerKeyAction> EmojiPickerModel::keyAction(int keyCode, bool isCommandHeld) {
    return actionOf(keys, keyCode, isCommandHeld);
}

bool EmojiPickerModel::handleKeyDown(const QString &keyWindowTitle, int keyCode, bool isCommandHeld) {
    const bool isOwn = keyWindowTitle == inDesktopWords(QLatin1String(windowTitle)); // as the window shows it
    const auto action = isOwn ? keyAction(keyCode, isCommandHeld) : std::nullopt;
    if (action)
        perform(*action);
    return action.has_value();
}

void EmojiPickerModel::perform(EmojiPickerKeyAction action) {
    using enum EmojiPickerKeyAction;
    switch (action) {
    case moveLeft:
        return move(EmojiMove::left);
    case moveRight:
        return move(EmojiMove::right);
    case moveUp:
        return move(EmojiMove::up);
    case moveDown:
        return move(EmojiMove::down);
    case previousCategory:
        return moveCategory(-1);
    case nextCategory:
        return moveCategory(+1);
    case copy:
        return chooseSelected();
    case togglePin:
        return togglePinOfSelected();
    case dismiss:
        if (m_onDismiss)
            m_onDismiss();
        return;
    }
}

} // namespace tavrine
