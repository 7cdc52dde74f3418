#include "utilities/emoji/EmojiPickerStore.h"

#include "base/UserDefaults.h"
namespace tavrine {

EmojiPickerStore::EmojiPickerStore(UserDefaults &defaults, const QString &tablePath, QObject *parent)
    : QObject(parent), m_defaults(defaults), m_rows(loadEmojiRows(tablePath)),
      m_search(m_rows.items, std::move(m_rows.searchTexts)),
      m_recentEmojis(storedList(recentsKey).value_or(defaultRecents())),
      m_pinnedEmojis(storedList(pinnedKey).value_or(defaultPins())) {
    m_search.setRecents(m_recentEmojis);
}

QStringList EmojiPickerStore::defaultRecents() {
    return {QStringLiteral("\U0001F5A4"), QStringLiteral("\U0001F680"), QStringLiteral("\U0001F60E"),
            QStringLiteral("\U0001F606"), QStringLiteral("\u2318"),     QStringLiteral("\U0001F607"),
            QStringLiteral("\U0001F4AC"), QStringLiteral("\u25E6"),     QStringLiteral("\U0001F44A"),
            QStringLiteral("\U0001F91D"), QStringLiteral("\u2705"),     QStringLiteral("\U0001F4B0"),
            QStringLiteral("\U0001F62C"), QStringLiteral("\U0001F52B"), QStringLiteral("\u2192"),
            QStringLiteral("\U0001F937")};
}

QStringList EmojiPickerStore::defaultPins() {
    return {QStringLiteral("\u2764\uFE0F"), QStringLiteral("\U0001F62C"), QStringLiteral("\U0001F64F"),
            QStringLiteral("\U0001F389")};
}

void EmojiPickerStore::recordRecent(const EmojiItem &item) {
    m_recentEmojis.removeAll(item.emoji);
    m_recentEmojis.prepend(item.emoji);
    if (m_recentEmojis.size() > maxRecents)
        m_recentEmojis.resize(maxRecents);
    storeList(recentsKey, m_recentEmojis);
    m_search.setRecents(m_recentEmojis);
    Q_EMIT recentEmojisChanged();
}

void EmojiPickerStore::togglePin(const EmojiItem &item) {
    if (m_pinnedEmojis.removeAll(item.emoji) == 0)
        m_pinnedEmojis.append(item.emoji);
    storeList(pinnedKey, m_pinnedEmojis);
    Q_EMIT pinnedEmojisChanged();
}

std::optional<QStringList> EmojiPickerStore::storedList(const char *key) const {
    const auto stored = m_defaults.get<UserDefaults::Array>(QLatin1String(key));
    if (!stored)
        return std::nullopt;
    QStringList list;
    for (const UserDefaults::Value &value : *stored) {
        const auto *const text = std::get_if<QString>(static_cast<const UserDefaults::Storage *>(&value));
        if (!text)
            return std::nullopt;
        list.append(*text);
    }
    return list;
}

void EmojiPickerStore::storeList(const char *key, const QStringList &list) {
    UserDefaults::Array values;
    for (const QString &text : list)
        values.emplace_back(text);
    m_defaults.set(QLatin1String(key), values);
}

} // namespace tavrine
