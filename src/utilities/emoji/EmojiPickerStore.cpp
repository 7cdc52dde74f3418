#include "utilities/emoji/EmojiPickerStore.h"

namespace tavrine {

EmojiPickerStore::EmojiPickerStore(UserDefaults &defaults, const QString &tablePath, QObject *parent)
    : QObject(parent), m_defaults(defaults), m_rows(loadEmojiRows(tablePath)),
      m_search(m_rows.items, std::move(m_rows.searchTexts)), m_recentEmojis(preference::recentEmojis.get(defaults)),
      m_pinnedEmojis(preference::pinnedEmojis.get(defaults)) {
    m_search.setRecents(m_recentEmojis);
}

void EmojiPickerStore::recordRecent(const EmojiItem &item) {
    m_recentEmojis.removeAll(item.emoji);
    m_recentEmojis.prepend(item.emoji);
    if (m_recentEmojis.size() > maxRecents)
        m_recentEmojis.resize(maxRecents);
    preference::recentEmojis.set(m_defaults, m_recentEmojis);
    m_search.setRecents(m_recentEmojis);
    Q_EMIT recentEmojisChanged();
}

void EmojiPickerStore::togglePin(const EmojiItem &item) {
    if (m_pinnedEmojis.removeAll(item.emoji) == 0)
        m_pinnedEmojis.append(item.emoji);
    preference::pinnedEmojis.set(m_defaults, m_pinnedEmojis);
    Q_EMIT pinnedEmojisChanged();
}

} // namespace tavrine
